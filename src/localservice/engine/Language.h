#pragma once

#include <QString>

namespace quillmate::localservice
{

/// The languages in which the engine has sentences of its own.
enum class Language { English, German, French, Spanish, Japanese, Arabic };

/// The language of a text, by its script or its most frequent small words; English when none fits.
Language languageOf(const QString& text);

/// Whether a folded word is so common in its language that it says nothing about what a text is about.
bool isCommonWord(const QString& word);

} // namespace quillmate::localservice
