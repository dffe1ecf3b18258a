#pragma once

#include <QString>
#include <QStringView>

namespace quillmate::server
{

/// Estimates of the number of a model's tokens in a text from both sides, without knowing the model's vocabulary.

/// Rather too many for what people write: an ASCII letter or blank counts as a third of a token, another ASCII
/// character as one; further characters as one, one and a half or three, by their two, three or four bytes in UTF-8. No
/// bound: capitals, letters without vowels (keys, Base64) and words of more than some 20 letters can come to more.
qsizetype mostTokens(QStringView text);
/// Hardly any vocabulary needs fewer: one token for each word of letters or digits and for every 12 of its characters
/// (four in scripts without blanks between words); nothing for signs and blanks, of which long runs may be one token.
qsizetype leastTokens(QStringView text);
/// The longest beginning of at most that many of `mostTokens`, cut after a line or a word where one ends in its last
/// fifth.
QString withinTokens(const QString& text, qsizetype tokens);

} // namespace quillmate::server
