#pragma once

#include "server/store/ThreadMessage.h"

#include <QByteArray>
#include <QString>

#include <optional>
#include <vector>

namespace quillmate::server
{

/// What a language model is asked to do.
struct PromptTask {
    enum class Kind { Summary, Reply, Answer };
    Kind kind = Kind::Summary;
    QString text;                       ///< of the message; empty only for an answer
    QString userName;                   ///< signs a reply, unless empty
    std::vector<ThreadMessage> earlier; ///< the turns before an answer, oldest first
    QString question;                   ///< what an answer is for
};

/// The messages of one request to a language model.
struct Prompt {
    QByteArray messages; ///< a JSON array
    QString fence;       ///< the line before and after the message's text
    QString cut;         ///< what did not fit, for the log; empty when all of it did
    qsizetype most = 0;  ///< the most tokens that it may come to
    qsizetype least = 0; ///< and the fewest
};

/// Puts the task into words for a model with a context of that many tokens: a quarter of it, at most 2,048, is left to
/// the answer. Where the rest is too short, the earlier turns of a chat go first beyond half of the room (the oldest
/// of them first), then the message's quoted history, its signature, its end. Nothing when there is no room to speak
/// of.
///
/// The message's text stands in the last turn between two lines that hold a random text which occurs nowhere in it, so
/// that nothing in it can end it; the system's message calls it material. Control tokens of chat templates are broken
/// in all that others wrote.
std::optional<Prompt> makePrompt(const PromptTask& task, qsizetype contextTokens);

} // namespace quillmate::server
