#pragma once

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <optional>

namespace quillmate::localservice
{

/// What a language model answered.
struct Completion {
    QString text;                  ///< as it came
    bool endsForLength = false;    ///< the model stopped because there was no more room
    std::int64_t promptTokens = 0; ///< what the server says it read; 0 where it does not say
};

/// Reads the body of a chat completion; nothing when it is none, or has no choice. A choice without a text has an empty
/// one.
std::optional<Completion> readCompletion(const QByteArray& body);

/// The answer proper: without blocks of reasoning ("<think>…</think>" and kin; one whose beginning or end is missing
/// reaches to the text's), without the prompt's fence, and without blanks around it.
QString answerIn(const QString& text, const QString& fence);

/// For a refusal's body: the size of the context that a server gives as its reason (llama.cpp tells `n_ctx`), 0 where
/// it says that the prompt was too long without a number; nothing where it says no such thing.
std::optional<std::int64_t> tooLongFor(const QByteArray& body);

} // namespace quillmate::localservice
