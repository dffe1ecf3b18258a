#pragma once

#include "server/engine/Language.h"
#include "server/engine/PersonName.h"

#include <QString>

#include <optional>

namespace quillmate::server
{

/// How a message addresses its reader, in the languages that have two ways ("du" and "Sie", "tu" and "vous", "tú" and
/// "usted").
enum class Tone { Formal, Familiar };

/// Formal unless the text has familiar forms and no formal ones.
Tone toneOf(const QString& text, Language language);

/// The first line of a reply to this person: "Hello Ana,", "Guten Tag Jonas Weber,", "Bonjour Madame Dupont,",
/// "Buenos días, Marta:", "田中様"; without a name where none is known. Nothing in it guesses a person's gender.
QString greeting(Language language, Tone tone, const std::optional<PersonName>& name);

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
