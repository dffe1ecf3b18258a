#include "server/model/Completion.h"

#include "server/model/ModelJson.h"

#include <nlohmann/json.hpp>

#include <QStringList>

#include <algorithm>

namespace quillmate::server
{

namespace
{

constexpr std::size_t longestContent = std::size_t(256) * 1024;

std::int64_t number(const ModelJson& value)
{
    constexpr double largest = 1e12;
    const double amount = value.is_number() ? value.get<double>() : 0;
    return amount > 0 && amount < largest ? static_cast<std::int64_t>(amount) : 0;
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
    const ModelJson whole = readModelJson(body);
    const ModelJson& choices = memberOf(whole, "choices");
    if (!choices.is_array() || choices.empty()) {
        return std::nullopt;
    }
    const ModelJson& choice = choices.front();
    const ModelJson& content = memberOf(memberOf(choice, "message"), "content");
    Completion completion;
    if (content.is_string()) {
        const auto& text = content.get_ref<const std::string&>();
        if (text.size() > longestContent) {
            return std::nullopt;
        }
        completion.text = QString::fromStdString(text);
    }
    completion.endsForLength = memberOf(choice, "finish_reason") == "length";
    completion.promptTokens = number(memberOf(memberOf(whole, "usage"), "prompt_tokens"));
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
    const ModelJson whole = readModelJson(body);
    const ModelJson& error = memberOf(whole, "error").is_object() ? memberOf(whole, "error") : whole;
    const auto says = [&error](const char* key, const char* words) {
        const ModelJson& value = memberOf(error, key);
        return value.is_string() && value.get_ref<const std::string&>().find(words) != std::string::npos;
    };
    // llama.cpp, the OpenAI protocol's own code, vLLM and others.
    const bool tooLong = says("type", "exceed_context_size") || says("code", "context_length_exceeded") ||
                         says("message", "context length") || says("message", "context size");
    if (!tooLong) {
        return std::nullopt;
    }
    return TooLong{number(memberOf(error, "n_ctx")), number(memberOf(error, "n_prompt_tokens"))};
}

bool saysCreditIsUsedUp(const QByteArray& body)
{
    const ModelJson whole = readModelJson(body);
    const ModelJson& error = memberOf(whole, "error");
    return memberOf(error, "code") == "insufficient_quota" || memberOf(error, "type") == "insufficient_quota";
}

} // namespace quillmate::server
