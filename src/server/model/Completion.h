#pragma once

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <optional>

namespace quillmate::server
{

/// What a language model answered.
struct Completion {
    QString text;                  ///< as it came
    bool endsForLength = false;    ///< the model stopped because there was no more room
    std::int64_t promptTokens = 0; ///< what the server says it read; 0 where it does not say
};

/// Reads the body of a chat completion; nothing when it is none, has no choice, or a text of more than 256 KiB. A
/// choice without a text has an empty one.
std::optional<Completion> readCompletion(const QByteArray& body);

/// The answer proper: without blocks of reasoning ("<think>…</think>" and kin; one whose beginning or end is missing
/// reaches to the text's), without the prompt's fence, and without blanks around it.
QString answerIn(const QString& text, const QString& fence);

/// What a server says when it refuses a prompt as too long, as llama.cpp does; 0 where it does not say.
struct TooLong {
    std::int64_t context = 0;      ///< the tokens it has room for
    std::int64_t promptTokens = 0; ///< those that the prompt has
};

/// Reads a refusal's body; nothing where it does not say that the prompt was too long.
std::optional<TooLong> tooLongFor(const QByteArray& body);

/// Whether a refusal's body says that the account has no credit left, which no waiting mends (OpenAI says so with 429).
bool saysCreditIsUsedUp(const QByteArray& body);

} // namespace quillmate::server
