#pragma once

#include <QString>

namespace quillmate::server
{

/// These take a word of a signature line as it stands, in any case, with or without its full stops.

/// "Dr.", "Prof.", "Mme", "Frau": stands before a name.
bool isTitle(const QString& word);

/// What follows a doctor's title in German ("med.", "rer.", "nat.").
bool isTitleSuffix(const QString& word);

/// "PhD", "MBA", "Jr.": stands behind a name.
bool isDegree(const QString& word);

/// "von", "de", "van", "al": written small within a name.
bool isNameParticle(const QString& word);

/// A word that a person's name never has: of a team, a company, a role, a greeting, a courtesy, a weekday.
bool isNeverInName(const QString& word);

} // namespace quillmate::server
