#include "localservice/model/Completion.h"

#include <nlohmann/json.hpp>

#include <QRegularExpression>
#include <QStringList>

#include <algorithm>

namespace quillmate::localservice
{

namespace
{

using Json = nlohmann::ordered_json;

Json parsed(const QByteArray& body)
{
    return Json::parse(body.begin(), body.end(), nullptr, false);
}

/// The member of an object, or null.
const Json& member(const Json& object, const char* key)
{
    static const Json none;
    const auto found = object.is_object() ? object.find(key) : object.end();
    return object.is_object() && found != object.end() ? *found : none;
}

std::int64_t number(const Json& value)
{
    constexpr double largest = 1e12;
    const double amount = value.is_number() ? value.get<double>() : 0;
    return amount > 0 && amount < largest ? static_cast<std::int64_t>(amount) : 0;
}

} // namespace

std::optional<Completion> readCompletion(const QByteArray& body)
{
    const Json whole = parsed(body);
    const Json& choices = member(whole, "choices");
    if (!choices.is_array() || choices.empty()) {
        return std::nullopt;
    }
    const Json& choice = choices.front();
    const Json& content = member(member(choice, "message"), "content");
    Completion completion;
    if (content.is_string()) {
        completion.text = QString::fromStdString(content.get<std::string>());
    }
    completion.endsForLength = member(choice, "finish_reason") == "length";
    completion.promptTokens = number(member(member(whole, "usage"), "prompt_tokens"));
    return completion;
}

QString answerIn(const QString& text, const QString& fence)
{
    static const auto options =
        QRegularExpression::CaseInsensitiveOption | QRegularExpression::DotMatchesEverythingOption;
    static const QRegularExpression block(QStringLiteral("<(think|thinking|reasoning)>.*?</\\1>"), options);
    static const QRegularExpression withoutBeginning(QStringLiteral("^.*</(think|thinking|reasoning)>"), options);
    static const QRegularExpression withoutEnd(QStringLiteral("^\\s*<(think|thinking|reasoning)>.*$"), options);
    QString answer = text;
    answer.remove(block).remove(withoutBeginning).remove(withoutEnd);
    if (answer.contains(fence)) {
        QStringList lines = answer.split(u'\n');
        lines.removeIf([&fence](const QString& line) { return line.trimmed() == fence; });
        answer = lines.join(u'\n').remove(fence);
    }
    return answer.trimmed();
}

std::optional<std::int64_t> tooLongFor(const QByteArray& body)
{
    const Json whole = parsed(body);
    const Json& error = member(whole, "error").is_object() ? member(whole, "error") : whole;
    const std::int64_t told = number(member(error, "n_ctx"));
    const auto says = [&error](const char* key, const char* words) {
        const Json& value = member(error, key);
        return value.is_string() && value.get<std::string>().find(words) != std::string::npos;
    };
    // llama.cpp, the OpenAI protocol's own code, vLLM and others.
    const bool tooLong = says("type", "exceed_context_size") || says("code", "context_length_exceeded") ||
                         says("message", "context length") || says("message", "context size");
    return tooLong ? std::optional(told) : std::nullopt;
}

} // namespace quillmate::localservice
