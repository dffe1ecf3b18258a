#pragma once

#include <QString>
#include <QStringView>

namespace quillmate::localservice
{

/// Replaces the character references of HTML (numeric, and the names of Latin-1 letters, punctuation and common signs);
/// a reference it does not know stays as it is.
QString withoutEntities(QStringView html);

} // namespace quillmate::localservice
