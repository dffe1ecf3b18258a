#include "server/model/OpenAiEngine.h"

#include "server/model/Completion.h"
#include "server/model/ModelFailure.h"
#include "server/model/ModelJson.h"

#include <algorithm>
#include <utility>

namespace quillmate::server
{

namespace
{

/// No server has so small a context: one that says so does not count what it reads.
constexpr std::int64_t leastBelieved = 256;

const char* nameOf(PromptTask::Kind kind)
{
    switch (kind) {
    case PromptTask::Kind::Summary:
        return "summary";
    case PromptTask::Kind::Reply:
        return "reply";
    case PromptTask::Kind::Answer:
        break;
    }
    return "chat";
}

QByteArray requestBody(const std::string& model, const QByteArray& messages)
{
    // No further settings: what one server asks for another refuses, and their defaults suit the model.
    QByteArray body = bytesOf(JSONObject{{"model", model}, {"stream", false}});
    body.chop(1);
    return body + ",\"messages\":" + messages + '}';
}

/// For which context to make the next prompt after one that was counted as `most` tokens was refused: one that fits by
/// the server's own count, where it tells that, with a tenth to spare; otherwise half of what it evidently takes.
qsizetype contextAfter(const TooLong& room, qsizetype most)
{
    if (room.context > 0 && room.promptTokens > room.context) {
        return static_cast<qsizetype>(0.9 * static_cast<double>(most) * static_cast<double>(room.context) /
                                      static_cast<double>(room.promptTokens));
    }
    return std::min(room.context > 0 ? static_cast<qsizetype>(room.context) : most, most) / 2;
}

Failure<EngineFailure> failure(const char* sentence)
{
    return Failure(EngineFailure{badGateway, sentence, 0});
}

} // namespace

OpenAiEngine::OpenAiEngine(Settings settings, Log log)
    : m_settings(std::move(settings))
    , m_log(std::move(log))
    , m_client(m_settings.key, m_settings.limits)
    , m_context(m_client, m_settings.address, m_settings.model, m_settings.contextTokens, m_log)
{
}

EngineText OpenAiEngine::summarize(const std::string& mail) const
{
    const QString text = consideredText(mail);
    return text.isEmpty() ? m_builtin.summarize(mail) : write({PromptTask::Kind::Summary, text, {}, {}, {}});
}

EngineText OpenAiEngine::reply(const std::string& mail, const std::string& userName) const
{
    const QString text = consideredText(mail);
    return text.isEmpty() ? m_builtin.reply(mail, userName)
                          : write({PromptTask::Kind::Reply, text, QString::fromStdString(userName), {}, {}});
}

std::string OpenAiEngine::readableText(const std::string& mail) const
{
    return consideredText(mail).toStdString();
}

EngineText OpenAiEngine::answer(const std::string& text, const std::vector<ThreadMessage>& earlier,
                                const std::string& question) const
{
    return write(
        {PromptTask::Kind::Answer, QString::fromStdString(text), {}, earlier, QString::fromStdString(question)});
}

EngineText OpenAiEngine::write(const PromptTask& task) const
{
    const QDeadlineTimer end(m_settings.limits.answer);
    const std::string name = nameOf(task.kind);
    EngineText written = failure("The language model's context is too small to read a message: give its server a "
                                 "larger one, or check --openai-context.");
    qsizetype context = m_context.size(end);
    for (int attempts = 0; attempts < 2; ++attempts) {
        const auto prompt = makePrompt(task, context);
        if (!prompt) {
            break;
        }
        if (!prompt->cut.isEmpty()) {
            m_log(name + ": left out for lack of room in a context of " + std::to_string(context) +
                  " tokens: " + prompt->cut.toStdString());
        }
        Attempt tried = attempt(*prompt, end);
        written = std::move(tried.text);
        if (tried.tooLong.empty()) {
            if (written) {
                m_context.modelAnswered();
                if (attempts > 0) {
                    m_context.learn(context); // Only now is it known to be so, and the next text need not find out.
                }
            }
            break;
        }
        context = tried.nextContext;
        m_log(name + ": the language model's server " + tried.tooLong +
              (attempts == 0 ? ": it is asked once more, for a context of " + std::to_string(context) +
                                   " tokens; set the server's own, or --openai-context"
                             : std::string()));
    }
    if (!written) {
        m_log(name + ": " + written.error().sentence);
    }
    return written;
}

OpenAiEngine::Attempt OpenAiEngine::attempt(const Prompt& prompt, QDeadlineTimer end) const
{
    const auto outcome =
        m_client.post(m_settings.address.completions, requestBody(m_settings.model, prompt.messages), end);
    if (!outcome) {
        return {Failure(failureOf(outcome.error()))};
    }
    const ModelResponse& response = outcome.value();
    const auto tooLong = failure("The language model's server takes less of a message than it says: give it a larger "
                                 "context, or the service a smaller --openai-context.");
    if (!response.isSuccess()) {
        const bool refused = response.status == 400 || response.status == 413;
        if (const auto room = refused ? tooLongFor(response.body) : std::nullopt) {
            return {tooLong,
                    "refuses the request as too long, which is counted as " + std::to_string(prompt.most) +
                        " tokens here",
                    contextAfter(*room, prompt.most)};
        }
        return {Failure(failureOf(response, m_client.hasKey()))};
    }
    const auto completion = readCompletion(response.body);
    if (!completion) {
        return {failure(
            "The language model's server answered with something else than a chat completion: check --openai-url.")};
    }
    if (completion->promptTokens >= leastBelieved && completion->promptTokens < prompt.least) {
        return {tooLong, "takes less than the " + std::to_string(prompt.least) + " tokens that it was sent at least",
                static_cast<qsizetype>(completion->promptTokens)};
    }
    const QString text = answerIn(completion->text, prompt.fence);
    if (completion->endsForLength) {
        return {failure("The language model ran out of room before its answer was complete: give its server a larger "
                        "context, or use a model that writes less.")};
    }
    if (text.isEmpty()) {
        return {failure("The language model answered without any text: try again, or use another model.")};
    }
    return {text.toStdString()};
}

} // namespace quillmate::server
