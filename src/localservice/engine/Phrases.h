#pragma once

#include "localservice/engine/Language.h"

#include <QString>

namespace quillmate::localservice
{

/// The engine's own sentences in one language.
struct Phrases {
    QString greeting;
    QString thanks;
    /// Leads in the message's main sentence.
    QString about;
    /// Leads in the questions that the message asks.
    QString questions;
    /// Stands where the user writes an answer.
    QString answerHere;
    QString closing;
    /// Leads in the sentences that answer a question.
    QString found;
    QString notFound;
    /// Says that a language model can be connected.
    QString modelNote;
    QString openQuote;
    QString closeQuote;
};

const Phrases& phrasesIn(Language language);

} // namespace quillmate::localservice
