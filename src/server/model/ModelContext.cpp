#include "server/model/ModelContext.h"

#include "server/model/ModelJson.h"

#include <QRegularExpression>

#include <algorithm>
#include <utility>

namespace quillmate::server
{

namespace
{

constexpr qsizetype smallest = 256; ///< a smaller number is taken for a mistake
constexpr qsizetype largest = 100'000'000;

/// Whether asking again would hardly bring another answer.
bool isFinal(const ModelResponse& response)
{
    return response.status < 500 && response.status != 408 && response.status != 429;
}

qsizetype sizeAt(const JSONValue& object, std::string_view key)
{
    const double size = numberAt(object, key);
    const bool plausible = size >= static_cast<double>(smallest) && size <= static_cast<double>(largest);
    return plausible ? static_cast<qsizetype>(size) : 0;
}

/// The entry of the array under `list` that has the model's name; Ollama adds ":latest" to a name without a tag.
const JSONValue& entryOf(const JSONValue& whole, const char* list, const std::string& model)
{
    static const JSONValue none;
    const JSONArray* entries = memberOf(whole, list).array();
    if (entries == nullptr) {
        return none;
    }
    const auto found = std::find_if(entries->begin(), entries->end(), [&model](const JSONValue& entry) {
        const auto isNamed = [&](const char* key) {
            const std::string* name = entry.stringMember(key);
            return name != nullptr && (*name == model || *name == model + ":latest");
        };
        return isNamed("id") || isNamed("name") || isNamed("model");
    });
    return found != entries->end() ? *found : none;
}

/// "num_ctx" among a model's parameters, which Ollama gives as lines of a name, blanks and a value.
qsizetype contextParameter(const JSONValue& details)
{
    static const QRegularExpression line(QStringLiteral("^num_ctx[ \t]+\"?([0-9]{1,9})"),
                                         QRegularExpression::MultilineOption);
    const std::string* parameters = details.stringMember("parameters");
    return line.match(parameters != nullptr ? QString::fromStdString(*parameters) : QString()).captured(1).toLongLong();
}

/// The most that a model can take, under "<architecture>.context_length".
qsizetype trainedContext(const JSONValue& details)
{
    constexpr std::string_view end = ".context_length";
    const JSONValue& information = memberOf(details, "model_info");
    if (const JSONObject* members = information.object()) {
        for (const auto& [key, value] : *members) {
            if (key.ends_with(end)) {
                return sizeAt(information, key);
            }
        }
    }
    return 0;
}

} // namespace

ModelContext::ModelContext(ModelClient& client, ModelAddress address, std::string model, qsizetype fixed, Log log)
    : m_client(client)
    , m_address(std::move(address))
    , m_model(std::move(model))
    , m_fixed(fixed)
    , m_log(std::move(log))
{
}

qsizetype ModelContext::size(QDeadlineTimer end)
{
    {
        const std::lock_guard lock(m_mutex);
        if (m_fixed > 0 || !m_valid.hasExpired()) {
            return bounded();
        }
    }
    const Told told = ask(std::min(end, QDeadlineTimer(m_client.limits().contextQuestion)));
    const std::lock_guard lock(m_mutex);
    m_size = told.tokens > 0 ? told.tokens : m_size;
    const std::string size = std::to_string(bounded());
    // What a server does not tell before it has loaded the model it may tell afterwards.
    m_mayTellLater = told.tokens == 0 && m_loaded.hasExpired();
    m_valid.setRemainingTime(told.passing || m_mayTellLater ? shortValidity : validity);
    if (told.tokens > 0) {
        say("the language model's context has " + std::to_string(told.tokens) + " tokens, as " + told.source +
            " tells");
    } else if (told.passing) {
        say("the language model's server cannot tell its context for now; " + size + " tokens are counted with");
    } else if (m_size == 0) {
        say("the language model's server does not tell its context; " + size +
            " tokens are counted with (--openai-context says otherwise)");
    }
    return bounded();
}

void ModelContext::learn(qsizetype tokens)
{
    const std::lock_guard lock(m_mutex);
    m_learned = m_learnedValid.hasExpired() ? tokens : std::min(tokens, m_learned);
    m_learnedValid.setRemainingTime(validity);
}

void ModelContext::modelAnswered()
{
    const std::lock_guard lock(m_mutex);
    m_loaded.setRemainingTime(shortValidity);
    if (std::exchange(m_mayTellLater, false)) {
        m_valid.setRemainingTime(0);
    }
}

qsizetype ModelContext::bounded() const
{
    const qsizetype size = m_fixed > 0 ? m_fixed : m_size > 0 ? m_size : untold;
    return m_learnedValid.hasExpired() ? size : std::min(size, m_learned);
}

void ModelContext::say(const std::string& line)
{
    if (std::exchange(m_said, line) != line) {
        m_log(line);
    }
}

ModelContext::Told ModelContext::ask(QDeadlineTimer end) const
{
    bool passing = false;
    bool goesOn = true;
    const auto objectIn = [&](const ModelClient::Outcome& outcome) {
        passing = passing || !outcome || !isFinal(outcome.value());
        // Who cannot be reached with one question cannot with the next.
        goesOn = goesOn && (outcome || outcome.error() == ModelProblem::Broken);
        return outcome && outcome.value().status == 200 ? readModelJson(outcome.value().body) : JSONValue();
    };
    const JSONValue models = objectIn(m_client.get(m_address.models, end));
    const JSONValue& listed = entryOf(models, "data", m_model);
    if (const qsizetype size = sizeAt(listed, "max_model_len"); size > 0) {
        return {size, "the list of models (max_model_len)", false};
    }
    if (const qsizetype size = sizeAt(memberOf(listed, "meta"), "n_ctx"); size > 0) {
        return {size, "the list of models (n_ctx)", false};
    }
    const JSONValue properties = goesOn ? objectIn(m_client.get(m_address.properties, end)) : JSONValue();
    if (const qsizetype size = sizeAt(memberOf(properties, "default_generation_settings"), "n_ctx"); size > 0) {
        return {size, "/props (n_ctx)", false};
    }
    const JSONValue running = goesOn ? objectIn(m_client.get(m_address.running, end)) : JSONValue();
    if (const qsizetype size = sizeAt(entryOf(running, "models", m_model), "context_length"); size > 0) {
        return {size, "/api/ps (context_length)", false};
    }
    const QByteArray question = bytesOf(JSONObject{{"model", m_model}});
    const JSONValue details = goesOn ? objectIn(m_client.post(m_address.details, question, end)) : JSONValue();
    const qsizetype trained = trainedContext(details);
    if (const qsizetype size = contextParameter(details); size >= smallest) {
        return {trained > 0 ? std::min(size, trained) : size, "/api/show (num_ctx)", false};
    }
    // What a model was trained with is no promise that its server gives it that much, only that it is no more.
    if (trained > 0 && trained < untold) {
        return {trained, "/api/show (context_length)", false};
    }
    return {0, "", passing};
}

} // namespace quillmate::server
