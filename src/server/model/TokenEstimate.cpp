#include "server/model/TokenEstimate.h"

#include "server/engine/ContentWords.h"

namespace quillmate::server
{

namespace
{

constexpr qsizetype sixthsPerToken = 6;

/// What a UTF-16 unit adds to `mostTokens`, in sixths of a token.
qsizetype sixthsOf(QChar unit)
{
    const char16_t code = unit.unicode();
    if (code < 0x80) {
        return unit.isLetter() || unit.isSpace() ? 2 : 6;
    }
    if (code < 0x800) {
        return 6;
    }
    return 9; // Two units, so three tokens, for a character beyond the basic plane.
}

} // namespace

qsizetype mostTokens(QStringView text)
{
    qsizetype sixths = 0;
    for (const QChar unit : text) {
        sixths += sixthsOf(unit);
    }
    return (sixths + sixthsPerToken - 1) / sixthsPerToken;
}

qsizetype leastTokens(QStringView text)
{
    constexpr qsizetype longestToken = 12;
    constexpr qsizetype longestUnspaced = 4;
    qsizetype tokens = 0;
    qsizetype inWord = 0;
    qsizetype unspaced = 0;
    for (const QChar unit : text) {
        if (isUnspaced(unit)) {
            inWord = 0;
            ++unspaced;
        } else if (unit.isLetterOrNumber()) {
            tokens += inWord % longestToken == 0 ? 1 : 0;
            ++inWord;
        } else if (!unit.isMark()) {
            inWord = 0;
        }
    }
    return tokens + unspaced / longestUnspaced;
}

QString withinTokens(const QString& text, qsizetype tokens)
{
    qsizetype sixths = 0;
    qsizetype end = 0;
    while (end < text.size() && (sixths += sixthsOf(text[end])) <= tokens * sixthsPerToken) {
        ++end;
    }
    if (end == text.size()) {
        return text;
    }
    const auto isBreak = [&text](auto fits, qsizetype from, qsizetype lowest) {
        while (from > lowest && !fits(text[from - 1])) {
            --from;
        }
        return from;
    };
    const qsizetype lowest = end - end / 5;
    qsizetype cut = isBreak([](QChar c) { return c == u'\n'; }, end, lowest);
    if (cut == lowest) {
        cut = isBreak([](QChar c) { return c.isSpace(); }, end, lowest);
    }
    if (cut == lowest) {
        cut = end > 0 && text[end - 1].isHighSurrogate() ? end - 1 : end;
    }
    while (cut > 0 && text[cut - 1].isSpace()) {
        --cut;
    }
    return text.left(cut);
}

} // namespace quillmate::server
