#pragma once

#include <QRegularExpression>
#include <QSet>
#include <QString>

namespace quillmate::server
{

/// An expression over the words of any language, in any case.
QRegularExpression wordPattern(const QString& pattern);

/// The words of a list with blanks between them.
QSet<QString> wordSet(const QString& list);

} // namespace quillmate::server
