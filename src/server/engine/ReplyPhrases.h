#pragma once

#include "server/engine/Language.h"
#include "server/engine/Tone.h"

#include <QString>

namespace quillmate::server
{

/// The sentences of a reply's draft, beside the greeting.
struct ReplyPhrases {
    QString thanks;
    /// Leads in the message's main sentence.
    QString about;
    /// Lead in what the message asks.
    QString question;
    QString questions;
    /// Stands where the user writes an answer.
    QString answerHere;
    QString closing;
    QString openQuote;
    QString closeQuote;
};

const ReplyPhrases& replyPhrases(Language language, Tone tone);

} // namespace quillmate::server
