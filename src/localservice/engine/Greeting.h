#pragma once

#include "localservice/engine/Language.h"
#include "localservice/engine/PersonName.h"
#include "localservice/engine/Tone.h"

#include <optional>

namespace quillmate::localservice
{

/// The first line of a reply to this person: "Hello Ana,", "Guten Tag Jonas Weber,", "Bonjour Madame Dupont,",
/// "Buenos días, Marta:", "田中様"; without a name where none is known. Nothing in it guesses a person's gender.
QString greeting(Language language, Tone tone, const std::optional<PersonName>& name);

} // namespace quillmate::localservice
