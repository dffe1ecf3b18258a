#pragma once

#include <QString>
#include <QStringList>

namespace quillmate::server
{

/// What can be seen in a question without knowing what it is about. Of a longer one the first 4,000 characters count.
struct ChatQuestion {
    enum class Kind { Ordinary, Overview, Courtesy };
    enum class Wants { Anything, Time, Number, Amount };

    QString text;      ///< in one line, folded in case, without marks at its end
    QStringList words; ///< what it is about; none in "And when?" and "Tell me more"
    Kind kind = Kind::Ordinary;
    Wants wants = Wants::Anything;
    /// Says "it" or "they" and hardly more, so that an earlier question tells what it is about.
    bool pointsBack = false;
    /// Begins with "and": it wants what the one before wanted.
    bool goesOn = false;
};

ChatQuestion readQuestion(const QString& question);

} // namespace quillmate::server
