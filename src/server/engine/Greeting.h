#pragma once

#include "server/engine/Language.h"
#include "server/engine/PersonName.h"
#include "server/engine/Tone.h"

#include <optional>

namespace quillmate::server
{

/// The first line of a reply to this person: "Hello Ana,", "Guten Tag Jonas Weber,", "Bonjour Madame Dupont,",
/// "Buenos días, Marta:", "田中様"; without a name where none is known. Nothing in it guesses a person's gender.
QString greeting(Language language, Tone tone, const std::optional<PersonName>& name);

} // namespace quillmate::server
