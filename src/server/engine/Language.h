#pragma once

#include <QString>

#include <optional>

namespace quillmate::server
{

/// The languages in which the engine has sentences of its own.
enum class Language { English, German, French, Spanish, Japanese, Arabic };

/// The language of a text, by its script or its most frequent small words; `otherwise` when none fits, or when it fits
/// as well as another.
Language languageOf(const QString& text, Language otherwise = Language::English);

/// The language of a text that shows it clearly: nothing for a language that is none of these, even a close one.
std::optional<Language> clearLanguageOf(const QString& text);

/// Whether a folded word is so common in its language that it says nothing about what a text is about.
bool isCommonWord(const QString& word);

} // namespace quillmate::server
