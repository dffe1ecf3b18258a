#include "server/engine/PersonName.h"

#include "server/engine/Language.h"
#include "server/engine/WordPatterns.h"

#include <QStringList>

#include <algorithm>

namespace quillmate::server
{

namespace
{

constexpr qsizetype longestLine = 120;
constexpr qsizetype longestWord = 25;
constexpr qsizetype mostWords = 5; // and three of titles

// These take a word of a signature line as it stands, in any case, with or without its full stops.

QString bare(const QString& word)
{
    return word.toLower().remove(u'.');
}

/// "Dr.", "Prof.", "Mme", "Frau": stands before a name.
bool isTitle(const QString& word)
{
    static const QSet<QString> titles =
        wordSet(QStringLiteral("dr prof professor mr mrs ms miss mx sir herr frau mme mlle madame monsieur sr sra srta "
                               "dra lic rev ing mag dipl-ing dr-ing familie family famille familia"));
    return titles.contains(bare(word));
}

/// What follows a doctor's title in German ("med.", "rer.", "nat.").
bool isTitleSuffix(const QString& word)
{
    static const QSet<QString> suffixes = wordSet(QStringLiteral("med rer nat phil jur pol oec hc h c habil"));
    return word.endsWith(u'.') && suffixes.contains(bare(word));
}

/// "PhD", "MBA", "Jr.": stands behind a name.
bool isDegree(const QString& word)
{
    static const QSet<QString> degrees = wordSet(QStringLiteral("phd md mba msc bsc ma ba llm cpa esq jr sr ii iii"));
    return degrees.contains(bare(word));
}

/// "von", "de", "van", "al": written small within a name.
bool isNameParticle(const QString& word)
{
    static const QSet<QString> particles = wordSet(
        QStringLiteral("von van de der den del della da di do dos das du des la le ter ten zu zur y e bin ibn al el"));
    return particles.contains(word.toLower());
}

/// A word that a person's name never has: of a team, a company, a role, a greeting, a courtesy, a weekday.
bool isNeverInName(const QString& word)
{
    static const QSet<QString> words = wordSet(QStringLiteral(
        "team support service services customer care kundenservice kundendienst équipe equipo company corporation gmbh "
        "ag kg inc ltd llc corp sarl sas s.l department dept abteilung sales vertrieb marketing office büro newsletter "
        "sekretariat verwaltung university universität université universidad school institute institut manager "
        "director direktor directeur directrice directora ceo cto cfo coo engineer geschäftsführer geschäftsführerin "
        "vorstand leiter leiterin assistant assistentin president head chief officer consultant ingénieur gerente "
        "responsable auftrag behalf group bank insurance agentur agence agency thanks thank danke dank merci gracias "
        "regards wishes greetings cheers grüße grüßen gruß saludos saludo cordialement best kind kindest warm mit mfg "
        "lg vg yes no ja nein oui non ok okay hi hello hallo dear hey bonjour hola liebe lieber all everyone everybody "
        "mate folks guys zusammen alle leute tous toutes todos friends freunde see talk until bis bei viel alles gute "
        "schönes schöne bonne belle buen buena feliz good great have happy enjoy fine perfect perfekt super sure "
        "agreed done noted please bitte attachment attachments anhang anbei anlage anlagen enclosure tel telefon "
        "telephone phone mobile mobil fax email e-mail mail web www ps monday tuesday wednesday thursday friday "
        "saturday sunday montag dienstag mittwoch donnerstag freitag samstag sonntag lundi mardi mercredi jeudi "
        "vendredi samedi dimanche lunes martes miércoles jueves viernes sábado domingo"));
    return words.contains(bare(word));
}

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
    return word.size() <= longestWord && ((!first && isNameParticle(word)) || word.contains(shape));
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
    if ((!both.hasMatch() && !text.contains(one)) || notNames.contains(family.back())) {
        return std::nullopt;
    }
    return PersonName{{}, both.captured(2), family};
}

std::optional<PersonName> arabicName(const QStringList& words)
{
    static const QRegularExpression shape(QStringLiteral("^[\\p{Arabic}\\p{M}]+$"));
    for (const QString& word : words) {
        if (!word.contains(shape) || isCommonWord(word)) {
            return std::nullopt;
        }
    }
    return PersonName{{}, words.first(), words.mid(1).join(u' ')};
}

/// Many sign a short message in small letters.
std::optional<PersonName> smallName(const QString& word)
{
    static const QRegularExpression shape(QStringLiteral("^\\p{Ll}[\\p{L}'-]{1,19}$"));
    if (!word.contains(shape) || isCommonWord(word) || isNeverInName(word)) {
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
