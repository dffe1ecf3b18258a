#pragma once

#include "server/engine/Language.h"

#include <QString>

namespace quillmate::server
{

/// How a message addresses its reader, in the languages that have two ways ("du" and "Sie", "tu" and "vous", "tú" and
/// "usted").
enum class Tone { Formal, Familiar };

/// Formal unless the text has familiar forms and no formal ones.
Tone toneOf(const QString& text, Language language);

} // namespace quillmate::server
