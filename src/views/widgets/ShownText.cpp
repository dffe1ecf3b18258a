#include "views/widgets/ShownText.h"

#include <QLocale>
#include <QTextBoundaryFinder>

#include <algorithm>

namespace quillmate
{
namespace
{

/// A text document's own marks, and control characters other than tabulators and line ends.
bool isUnshowable(QChar character)
{
    const char16_t code = character.unicode();
    const bool layout = code == u'\t' || code == u'\n' || code == u'\r';
    const bool control = code < 0x20 || (code >= 0x7F && code < 0xA0 && code != 0x85);
    // An embedded object, and the marks that begin and end a frame.
    const bool mark = code == 0xFFFC || (code >= 0xFDD0 && code <= 0xFDEF);
    return (control && !layout) || mark;
}

/// How many units of the text can be laid out in a blink: a unit of an emoji or a mark takes as long as many letters.
qsizetype showableLength(const QString& text)
{
    constexpr qsizetype slowness = 16;
    qsizetype cost = 0;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar unit = text[i];
        cost += unit.isSurrogate() || unit.isMark() || unit.unicode() == 0x200D ? slowness : 1;
        if (cost > longestShownText) {
            return i;
        }
    }
    return text.size();
}

/// The end of the last whole character up to there, as a reader counts characters.
qsizetype lastBoundary(const QString& text, qsizetype length)
{
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    finder.setPosition(length);
    const qsizetype end = finder.isAtBoundary() ? length : finder.toPreviousBoundary();
    if (end > 0) {
        return end;
    }
    return text[length - 1].isHighSurrogate() ? length - 1 : length; // One character longer than all there is room for.
}

} // namespace

ShownText ShownText::of(const std::string& text)
{
    // No character takes more bytes of UTF-8 than three for each of its UTF-16 units; a few more units settle whether
    // the bound cuts a character.
    constexpr std::size_t enough = 3 * (longestShownText + 100);
    ShownText shown{QString::fromUtf8(text.data(), static_cast<qsizetype>(std::min(text.size(), enough))), {}};
    const qsizetype length = showableLength(shown.text);
    if (length < shown.text.size()) {
        shown.text.truncate(lastBoundary(shown.text, length));
        shown.note =
            QStringLiteral("This text is very long (%1). Only its beginning is shown.")
                .arg(QLocale::c().formattedDataSize(static_cast<qint64>(text.size()), 1, QLocale::DataSizeSIFormat));
    }
    std::replace_if(shown.text.begin(), shown.text.end(), isUnshowable, QChar(QChar::ReplacementCharacter));
    return shown;
}

} // namespace quillmate
