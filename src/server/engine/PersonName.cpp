#include "server/engine/PersonName.h"

#include "server/engine/Language.h"
#include "server/engine/NameWords.h"

#include <QRegularExpression>
#include <QStringList>

#include <algorithm>

namespace quillmate::server
{

namespace
{

constexpr qsizetype longestLine = 120;
constexpr qsizetype longestWord = 25;
constexpr qsizetype mostWords = 5; // and three of titles

bool isAllCaps(const QString& word)
{
    return word == word.toUpper() && word != word.toLower();
}

/// "ANNE-MARIE" as "Anne-Marie".
QString inOrdinaryLetters(const QString& word)
{
    QString result = word.toLower();
    for (qsizetype index = 0; index < result.size(); ++index) {
        const bool begins =
            index == 0 || result[index - 1] == u'-' || result[index - 1] == u'\'' || result[index - 1] == u'’';
        result[index] = begins ? result[index].toUpper() : result[index];
    }
    return result;
}

/// Takes away what stands around a name on its line.
QString nameAlone(const QString& line)
{
    static const QRegularExpression around(QStringLiteral("^[\\s*_~=#>\"“”'–—-]+|[\\s*_~=\"“”'–—-]+$"));
    static const QRegularExpression behind(QStringLiteral("\\s*[,،、|(<·•/\\t].*$|\\s+[-–—]\\s.*$"));
    static const QRegularExpression before(QStringLiteral("^(i\\.\\s?[av]\\.|ppa\\.|p\\.\\s?p\\.|gez\\.|d\\.(?=\\s+\\p{"
                                                          "L}{3,}\\s+\\S)|deine?|eure?|ihre?(?=\\s+\\S+\\s+\\S))\\s+"),
                                           QRegularExpression::CaseInsensitiveOption);
    QString name = line;
    name.remove(behind).remove(around).remove(before);
    return name.trimmed();
}

/// "Tom", "O'Neil-Brown", "J.", "St."; a small particle where one may stand.
bool isNameWord(const QString& word, bool first)
{
    static const QRegularExpression shape(QStringLiteral("^\\p{Lu}[\\p{L}\\p{M}'’-]*\\.?$"));
    return word.size() <= longestWord && ((!first && isNameParticle(word)) || shape.match(word).hasMatch());
}

bool isInitial(const QString& word)
{
    return word.size() == 1 || (word.size() == 2 && word[1] == u'.');
}

QString takeTitle(QStringList& words)
{
    QStringList title;
    while (words.size() > 1 && (isTitle(words.first()) || (!title.isEmpty() && isTitleSuffix(words.first())))) {
        const QString word = words.takeFirst();
        if (isTitle(word)) {
            title.append(word);
        }
    }
    return title.join(u' ');
}

/// From where on the words are the family's: the first particle, else the last word.
qsizetype familyStart(const QStringList& words)
{
    for (qsizetype index = 1; index + 1 < words.size(); ++index) {
        if (isNameParticle(words[index])) {
            return index;
        }
    }
    return words.size() - 1;
}

/// "DUPONT Claire" as "Claire DUPONT".
void putFamilyLast(QStringList& words)
{
    const bool familyFirst = words.size() == 2 && words[0].size() > 2 && isAllCaps(words[0]) && !isAllCaps(words[1]);
    if (familyFirst) {
        words.swapItemsAt(0, 1);
    }
}

std::optional<PersonName> latinName(QStringList words, NameEvidence evidence)
{
    PersonName name;
    name.title = takeTitle(words);
    while (words.size() > 2 && isDegree(words.last())) {
        words.removeLast();
    }
    for (qsizetype index = 0; index < words.size(); ++index) {
        const bool doubtful =
            evidence == NameEvidence::Alone && isCommonWord(words[index].toLower()) && !isNameParticle(words[index]);
        if (!isNameWord(words[index], index == 0) || isNeverInName(words[index]) || doubtful) {
            return std::nullopt;
        }
    }
    if (std::all_of(words.begin(), words.end(), isInitial)) {
        return std::nullopt;
    }
    putFamilyLast(words);
    for (qsizetype index = 0; index < words.size(); ++index) {
        const bool initials = words[index].size() < 3 && index == 0;
        if (isAllCaps(words[index]) && !initials && !isInitial(words[index])) {
            const bool particle = index > 0 && index + 1 < words.size() && isNameParticle(words[index]);
            words[index] = particle ? words[index].toLower() : inOrdinaryLetters(words[index]);
        }
    }
    // A sentence of one word ends as one; an initial or "Jr." may end in its full stop.
    if (words.last().endsWith(u'.') && words.last().size() > 2) {
        words.last().chop(1);
    }
    const qsizetype split = words.size() > 1 ? familyStart(words) : 1;
    name.given = words.mid(0, split).join(u' ');
    name.family = words.mid(split).join(u' ');
    return name;
}

/// "田中 恵子", or up to three characters alone; a department or a shop is none.
std::optional<PersonName> japaneseName(const QString& text)
{
    static const QRegularExpression two(QStringLiteral("^(\\p{Han}{1,3})[ \\x{3000}]+([\\p{Han}\\p{Hiragana}]{1,3})$"));
    static const QRegularExpression one(QStringLiteral("^\\p{Han}{2,3}$"));
    static const QString notNames = QStringLiteral("部課社室店所様会係局");
    const auto both = two.match(text);
    const QString family = both.hasMatch() ? both.captured(1) : text;
    if ((!both.hasMatch() && !one.match(text).hasMatch()) || notNames.contains(family.back())) {
        return std::nullopt;
    }
    return PersonName{{}, both.captured(2), family};
}

std::optional<PersonName> arabicName(const QStringList& words)
{
    static const QRegularExpression shape(QStringLiteral("^[\\p{Arabic}\\p{M}]+$"));
    for (const QString& word : words) {
        if (!shape.match(word).hasMatch() || isCommonWord(word)) {
            return std::nullopt;
        }
    }
    return PersonName{{}, words.first(), words.mid(1).join(u' ')};
}

/// Many sign a short message in small letters.
std::optional<PersonName> smallName(const QString& word)
{
    static const QRegularExpression shape(QStringLiteral("^\\p{Ll}[\\p{L}'-]{1,19}$"));
    if (!shape.match(word).hasMatch() || isCommonWord(word) || isNeverInName(word)) {
        return std::nullopt;
    }
    return PersonName{{}, inOrdinaryLetters(word), {}};
}

} // namespace

QString PersonName::whole() const
{
    const bool familyFirst = !family.isEmpty() && family[0].script() == QChar::Script_Han;
    return (familyFirst ? family + u' ' + given : given + u' ' + family).trimmed();
}

std::optional<PersonName> readName(const QString& line, NameEvidence evidence)
{
    if (line.size() > longestLine) {
        return std::nullopt;
    }
    const QString text = nameAlone(line);
    const QStringList words = text.split(u' ', Qt::SkipEmptyParts);
    const bool isSentence = evidence == NameEvidence::Alone && line.endsWith(u'.');
    if (words.isEmpty() || words.size() > mostWords + 3 || isSentence) {
        return std::nullopt;
    }
    if (text[0].script() == QChar::Script_Han) {
        return japaneseName(text);
    }
    const bool signedBelow = evidence == NameEvidence::Signed;
    if (text[0].script() == QChar::Script_Arabic) {
        return signedBelow && words.size() <= mostWords ? arabicName(words) : std::nullopt;
    }
    if (signedBelow && words.size() == 1 && text[0].isLower()) {
        return smallName(text);
    }
    return latinName(words, evidence);
}

} // namespace quillmate::server
