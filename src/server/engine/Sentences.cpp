#include "server/engine/Sentences.h"

#include "server/engine/ContentWords.h"
#include "server/engine/SentenceSigns.h"
#include "server/engine/WordPatterns.h"

#include <algorithm>

namespace quillmate::server
{

namespace
{

constexpr qsizetype longestSentence = 600;

bool isFullStop(QChar c)
{
    return c == u'.' || c == u'!' || c == u'?' || c == u'…' || c == u'؟' || c == u'۔' || c == u'।' || c == u'‽';
}

// These end a sentence whatever follows.
bool isWideStop(QChar c)
{
    return c == u'。' || c == u'！' || c == u'？' || c == u'｡' || c == u'．';
}

bool isClosing(QChar c)
{
    static const QString closing = QStringLiteral("\"'”’»)]}」』）】›");
    return closing.contains(c);
}

bool isAbbreviation(const QString& word)
{
    static const QSet<QString> known = wordSet(
        QStringLiteral("mr mrs ms dr prof st vs etc approx no nr bzw usw ca evtl ggf inkl str tel vgl mme mlle env sr "
                       "sra ing dept inc ltd co jan feb aug sept sep oct nov dec okt dez fig max min hr fr"));
    return word.size() == 1 || word.contains(u'.') || known.contains(word.toLower());
}

/// The word that ends before `end`, with the full stops inside it ("z.B").
QString wordBefore(const QString& text, qsizetype end)
{
    qsizetype start = end;
    while (start > 0 && (text[start - 1].isLetterOrNumber() || text[start - 1] == u'.')) {
        --start;
    }
    return text.mid(start, end - start);
}

/// Whether the word before `end` is one that German puts before a day ("am 3. Mai").
bool isBeforeDay(const QString& text, qsizetype end)
{
    static const QSet<QString> words = wordSet(QStringLiteral("am vom zum bis den dem der des ab seit"));
    return end > 0 && words.contains(wordBefore(text, end - 1).toLower());
}

/// Whether the full stop at `index` belongs to "a.m." or "p.m." and what follows begins a sentence: a day or a time
/// zone goes on with the hour.
bool endsHour(const QString& text, qsizetype index, qsizetype after)
{
    static const QRegularExpression goesOn(
        QStringLiteral("^\\s+((mon|tues|wednes|thurs|fri|satur|sun)day|(january|february|march|april|may|june|july|"
                       "august|september|october|november|december) \\d|(?-i)[A-Z]{2,4}\\b)"),
        QRegularExpression::CaseInsensitiveOption);
    const QString word = wordBefore(text, index).toLower();
    return (word == QStringLiteral("a.m") || word == QStringLiteral("p.m")) && text[after + 1].isUpper() &&
           !text.mid(after, longestSentence).contains(goesOn);
}

/// Whether the full stop at `index` ends a sentence; `after` is the first character behind it and its closing marks.
bool endsSentence(const QString& text, qsizetype index, qsizetype after)
{
    if (isWideStop(text[index]) || after >= text.size()) {
        return true;
    }
    if (!text[after].isSpace()) {
        return false;
    }
    if (text[index] != u'.' || after + 1 >= text.size()) {
        return true;
    }
    const QChar next = text[after + 1];
    const QString word = wordBefore(text, index);
    const bool number = !word.isEmpty() && std::all_of(word.begin(), word.end(), [](QChar c) { return c.isDigit(); });
    const bool ordinal = number && word.size() <= 2 &&
                         (word.size() == index || next.isLower() || isBeforeDay(text, index - word.size()));
    if (endsHour(text, index, after)) {
        return true;
    }
    const bool letters = !word.isEmpty() && !number;
    return !next.isLower() && !ordinal && !(letters && isAbbreviation(word));
}

void addSentence(QStringList& found, QString sentence)
{
    sentence = sentence.simplified();
    while (sentence.size() > longestSentence) {
        const qsizetype blank = sentence.lastIndexOf(u' ', longestSentence);
        qsizetype cut = blank > longestSentence / 2 ? blank : longestSentence;
        cut -= sentence[cut].isLowSurrogate() ? 1 : 0;
        found.append(sentence.left(cut).trimmed());
        sentence = sentence.mid(cut).trimmed();
    }
    if (!sentence.isEmpty()) {
        found.append(sentence);
    }
}

void splitParagraph(const QString& paragraph, QStringList& found, qsizetype limit)
{
    qsizetype start = 0;
    for (qsizetype index = 0; index < paragraph.size() && found.size() < limit; ++index) {
        if (!isFullStop(paragraph[index]) && !isWideStop(paragraph[index])) {
            continue;
        }
        qsizetype after = index + 1;
        while (after < paragraph.size() &&
               (isClosing(paragraph[after]) || isFullStop(paragraph[after]) || isWideStop(paragraph[after]))) {
            ++after;
        }
        if (endsSentence(paragraph, after - 1 > index && isWideStop(paragraph[after - 1]) ? after - 1 : index, after)) {
            addSentence(found, paragraph.mid(start, after - start));
            start = after;
        }
        index = after - 1;
    }
    addSentence(found, paragraph.mid(start));
}

/// Whether a line stands alone although no empty line follows: it is much shorter than the paragraph's lines, ends as a
/// greeting or heading does, or the next one begins a list item.
bool endsParagraph(const QString& line, const QString& next, qsizetype width, bool first)
{
    const QString text = line.trimmed();
    const QString following = next.trimmed();
    if (text.isEmpty() || following.isEmpty() || isListItem(next)) {
        return true;
    }
    const QChar last = text.back();
    const bool comma = last == u',' || last == u'،' || last == u'、';
    if (last == u':' || last == u'：' || (comma && text.size() < 40 && (first || text.size() * 2 < width))) {
        return true;
    }
    // The next word would have fitted, so the break was meant.
    return width > 50 ? text.size() + following.section(u' ', 0, 0).size() + 12 < width && !following[0].isLower()
                      : following[0].isUpper();
}

} // namespace

QStringList sentences(const QString& text, qsizetype limit)
{
    const QStringList lines = text.split(u'\n');
    QStringList found;
    QString paragraph;
    qsizetype width = 0;
    for (const QString& line : lines) {
        width = std::max(width, std::min(line.size(), qsizetype(80)));
    }
    for (qsizetype index = 0; index < lines.size() && found.size() < limit; ++index) {
        const QString line = lines[index].trimmed();
        const bool joinTight =
            !paragraph.isEmpty() && !line.isEmpty() && isUnspaced(paragraph.back()) && isUnspaced(line[0]);
        paragraph += (paragraph.isEmpty() || joinTight ? QString() : QStringLiteral(" ")) + line;
        const QString next = index + 1 < lines.size() ? lines[index + 1] : QString();
        if (endsParagraph(line, next, width, found.isEmpty() && paragraph == line)) {
            splitParagraph(paragraph, found, limit);
            paragraph.clear();
        }
    }
    if (found.size() > limit) {
        found.resize(limit);
    }
    return found;
}

bool isQuestion(const QString& sentence)
{
    qsizetype end = sentence.size();
    while (end > 0 && isClosing(sentence[end - 1])) {
        --end;
    }
    return end > 1 && (sentence[end - 1] == u'?' || sentence[end - 1] == u'？' || sentence[end - 1] == u'؟');
}

bool hasContent(const QString& sentence)
{
    static const QRegularExpression link(QStringLiteral("^<?(https?://|www\\.|mailto:)\\S+>?$"));
    qsizetype letters = 0;
    qsizetype unspaced = 0;
    for (const QChar character : sentence) {
        letters += character.isLetter() ? 1 : 0;
        unspaced += isUnspaced(character) ? 1 : 0;
    }
    if (letters * 3 < sentence.size() || isClosingFormula(sentence) || sentence.contains(link)) {
        return false;
    }
    const QChar last = sentence.back();
    const bool finished = isFullStop(last) || isWideStop(last) || isClosing(last);
    const bool greeting = last == u',' || last == u'،' || last == u'、' || last == u':' || last == u'：';
    const qsizetype words = sentence.count(u' ') + 1;
    if (unspaced * 2 > sentence.size()) {
        return sentence.size() >= (finished ? 5 : 12) && !greeting;
    }
    return !(greeting && words < 6) && words >= (finished ? 3 : 5);
}

} // namespace quillmate::server
