#pragma once

#include "server/engine/Language.h"

#include <QString>

namespace quillmate::server
{

/// The engine's own sentences in a chat.
struct ChatPhrases {
    /// Leads in the sentences that answer a question.
    QString found;
    /// The same, for a question that is understood by an earlier one.
    QString foundForEarlier;
    /// Leads in further sentences, for a question that was answered before.
    QString more;
    /// Leads in the same sentences once more, for want of others.
    QString noMore;
    QString notFound;
    QString noMessage;
    /// For a greeting and for thanks.
    QString courtesy;
};

const ChatPhrases& chatPhrases(Language language);

} // namespace quillmate::server
