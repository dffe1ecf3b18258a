#include "server/engine/WordPatterns.h"

#include <QStringList>

namespace quillmate::server
{

QRegularExpression wordPattern(const QString& pattern)
{
    return QRegularExpression(pattern, QRegularExpression::CaseInsensitiveOption |
                                           QRegularExpression::UseUnicodePropertiesOption);
}

QSet<QString> wordSet(const QString& list)
{
    const QStringList words = list.split(u' ');
    return {words.begin(), words.end()};
}

} // namespace quillmate::server
