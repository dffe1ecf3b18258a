#include "server/model/Completion.h"

#include "server/model/ModelJson.h"

#include <QStringList>

namespace quillmate::server
{

namespace
{

constexpr std::size_t longestContent = std::size_t(256) * 1024;

std::int64_t countAt(const JSONValue& object, std::string_view key)
{
    constexpr double largest = 1e12;
    const double count = numberAt(object, key);
    return count > 0 && count < largest ? static_cast<std::int64_t>(count) : 0;
}

/// Without the blocks between these tags. Quick for any text: each tag is looked for from where the last one ended.
QString withoutBlocks(const QString& text, const QString& begin, const QString& end)
{
    QString rest;
    qsizetype read = 0;
    for (;;) {
        const qsizetype block = text.indexOf(begin, read, Qt::CaseInsensitive);
        const qsizetype last = block < 0 ? -1 : text.indexOf(end, block, Qt::CaseInsensitive);
        if (last < 0) {
            return rest.append(QStringView(text).mid(read));
        }
        rest += QStringView(text).mid(read, block - read);
        read = last + end.size();
    }
}

QString withoutReasoning(QString text)
{
    for (const QString& name : {QStringLiteral("think>"), QStringLiteral("thinking>"), QStringLiteral("reasoning>")}) {
        const QString begin = u'<' + name;
        const QString end = QStringLiteral("</") + name;
        text = withoutBlocks(text, begin, end);
        if (const qsizetype last = text.lastIndexOf(end, -1, Qt::CaseInsensitive); last >= 0) {
            text.remove(0, last + end.size());
        }
        if (text.trimmed().startsWith(begin, Qt::CaseInsensitive)) {
            return {};
        }
    }
    return text;
}

} // namespace

std::optional<Completion> readCompletion(const QByteArray& body)
{
    const JSONValue whole = readModelJson(body);
    const JSONArray* choices = memberOf(whole, "choices").array();
    if (choices == nullptr || choices->empty()) {
        return std::nullopt;
    }
    const JSONValue& choice = choices->front();
    Completion completion;
    if (const std::string* text = memberOf(choice, "message").stringMember("content")) {
        if (text->size() > longestContent) {
            return std::nullopt;
        }
        completion.text = QString::fromStdString(*text);
    }
    completion.endsForLength = memberOf(choice, "finish_reason") == "length";
    completion.promptTokens = countAt(memberOf(whole, "usage"), "prompt_tokens");
    return completion;
}

QString answerIn(const QString& text, const QString& fence)
{
    QString answer = withoutReasoning(text);
    if (answer.contains(fence)) {
        QStringList lines = answer.split(u'\n');
        lines.removeIf([&fence](const QString& line) { return line.trimmed() == fence; });
        answer = lines.join(u'\n').remove(fence);
    }
    return answer.trimmed();
}

std::optional<TooLong> tooLongFor(const QByteArray& body)
{
    const JSONValue whole = readModelJson(body);
    const JSONValue& error = memberOf(whole, "error").object() != nullptr ? memberOf(whole, "error") : whole;
    const auto says = [&error](const char* key, const char* words) {
        const std::string* value = error.stringMember(key);
        return value != nullptr && value->find(words) != std::string::npos;
    };
    // llama.cpp, the OpenAI protocol's own code, vLLM and others.
    const bool tooLong = says("type", "exceed_context_size") || says("code", "context_length_exceeded") ||
                         says("message", "context length") || says("message", "context size");
    if (!tooLong) {
        return std::nullopt;
    }
    return TooLong{countAt(error, "n_ctx"), countAt(error, "n_prompt_tokens")};
}

bool saysCreditIsUsedUp(const QByteArray& body)
{
    const JSONValue whole = readModelJson(body);
    const JSONValue& error = memberOf(whole, "error");
    return memberOf(error, "code") == "insufficient_quota" || memberOf(error, "type") == "insufficient_quota";
}

} // namespace quillmate::server
