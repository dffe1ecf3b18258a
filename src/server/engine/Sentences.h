#pragma once

#include <QString>
#include <QStringList>

namespace quillmate::server
{

/// The sentences of a text in order: lines of a paragraph belong together, list items and headings stand alone, and a
/// full stop after an abbreviation, an initial or an ordinal ends nothing. Knows the sentence ends of Latin, CJK and
/// Arabic writing. A sentence is at most 600 characters; at most `limit` are returned.
QStringList sentences(const QString& text, qsizetype limit);

/// Whether a sentence carries content of its own: not a greeting line, a sign-off, a bare link or a heading of one
/// word.
bool hasContent(const QString& sentence);

/// Whether it asks something.
bool isQuestion(const QString& sentence);

} // namespace quillmate::server
