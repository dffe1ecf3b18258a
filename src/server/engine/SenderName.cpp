#include "server/engine/SenderName.h"

#include "mail/QuotedText.h"
#include "server/engine/WordPatterns.h"

#include <QStringList>

#include <algorithm>
#include <vector>

namespace quillmate::server
{

namespace
{

// A confidentiality notice may stand below the name.
constexpr qsizetype lookedAtLines = 60;
constexpr qsizetype shortLine = 50;

constexpr qsizetype longestSignOff = 120;
// "Thank you very much!" closes; a longer sentence of thanks may open the message.
constexpr qsizetype longestExclamation = 12;

QString withoutPunctuation(const QString& text)
{
    static const QRegularExpression marks(QStringLiteral("^[\\s,،、.!–—-]+|[\\s,،、]+$"));
    return QString(text).remove(marks);
}

/// Whether a line of a letter closes it ("Best regards,", "Viele Grüße", "Bien cordialement", "Un saludo,", "Thanks for
/// your help,"), in a dozen languages' commonest words. What comes back is the name on the same line ("LG Jonas",
/// "Best, Tom"), often empty; nothing for another line.
std::optional<QString> signOff(const QString& line)
{
    const QString text = line.trimmed();
    if (text.isEmpty() || text.size() > longestSignOff) {
        return std::nullopt;
    }
    // Ends every letter, whatever follows.
    static const QRegularExpression regards = wordPattern(QStringLiteral(
        "^((with |my |our |many )*((very )?(kind|best|warm|good|friendly|sincere|cordial)(est)? )?(personal "
        ")?(regards|wishes|greetings)|(all the )?best|cheers|yours( (sincerely|faithfully|truly|ever))?|sincerely( "
        "yours)?|respectfully|cordially|warmly|hugs|xoxo|take care|(lots of |with )?love|rgds|kr|br|(mit )?(\\p{L}+ "
        "){0,3}gr(ü|ue)(ß|ss)(e|en)?|(\\p{L}+ )?gru(ß|ss)|lg|vg|mfg|hg|bg|hochachtungsvoll|herzlichst|alles gute|(bien "
        "|très )?(cordialement|sincèrement|amicalement|respectueusement)|cdlt|(mes |nos "
        ")?((meilleures|sincères|cordiales) )?salutations|bien à (vous|toi)|(gros(ses)? )?bis(ous|es)|veuillez "
        "(agréer|recevoir)|je vous prie d['’]agréer|amitiés|(reciban? )?(un |muchos )?(cordial(es)? |afectuosos? "
        "|atentos? )?saludos?( cordial(es)?)?|atentamente|atte|cordialmente|(un )?(fuerte )?abrazos?( "
        "fuerte)?|besos|(cordiali |distinti )?saluti|atenciosamente|abraços|(met )?vriendelijke "
        "groet(en)?)(?![\\p{L}’'-])|^.{0,30}(お願い(いた|致)?し(ま|申)|敬具|以上)|^(مع "
        "(أطيب|خالص|فائق|تحيات|التحي|الشكر)|تحيات|وتفضلوا|تفضلوا).*$"));
    // Ends a letter where it ends a line, but what follows without a comma may name the reader ("Thanks Tom").
    static const QRegularExpression courtesies = wordPattern(
        QStringLiteral("^((many |with )?thanks|thank you|(i |we )?(am |are )?look(ing)? forward|talk (to you "
                       ")?soon|see you|(viel|herzlich|best)en dank|danke|bis (bald|dann|morgen)|(un grand )?merci|à "
                       "(bientôt|demain|plus)|bonne (journée|soirée|semaine)|belle journée|dans l['’]attente|(muchas "
                       ")?gracias|hasta (pronto|luego|mañana)|quedo a|(en|a) la espera|شكرا)\\b"));
    auto match = regards.match(text);
    const bool always = match.hasMatch();
    if (!always) {
        match = courtesies.match(text);
    }
    if (!match.hasMatch()) {
        return std::nullopt;
    }
    const QString rest = text.mid(match.capturedEnd());
    const bool isSentence = rest.endsWith(u'.') || rest.endsWith(u'!');
    if (!always && isSentence && rest.size() > longestExclamation) {
        return std::nullopt;
    }
    const qsizetype comma = rest.lastIndexOf(u',');
    const bool names = !isSentence && (comma >= 0 || always);
    return names ? withoutPunctuation(rest.mid(comma + 1)) : QString();
}

/// The lines that are not empty, each with what a paragraph's end needs.
struct Line {
    QString text;
    bool afterBlank = false;
};

std::vector<Line> linesOf(const QStringList& lines)
{
    std::vector<Line> kept;
    bool blank = true;
    for (const QString& line : lines) {
        const QString text = line.trimmed();
        if (!text.isEmpty()) {
            kept.push_back({text, blank});
        }
        blank = text.isEmpty();
    }
    return kept;
}

/// The name on one of the lines from `first`, the `count` of them that may hold it.
std::optional<PersonName> nameIn(const std::vector<Line>& lines, std::size_t first, std::size_t count,
                                 NameEvidence evidence)
{
    const std::size_t end = std::min(lines.size(), first + count);
    for (std::size_t index = first; index < end && lines[index].text.size() < 2 * shortLine; ++index) {
        if (auto name = readName(lines[index].text, evidence)) {
            return name;
        }
    }
    return std::nullopt;
}

std::optional<PersonName> nameBySignOff(const std::vector<Line>& lines)
{
    // The first line addresses the reader: "Thanks, Tom" there names Tom.
    for (std::size_t index = lines.size(); index > 1; --index) {
        const auto beside = signOff(lines[index - 1].text);
        if (!beside) {
            continue;
        }
        // In small letters it may be any word ("best wishes always").
        const bool readable = !beside->isEmpty() && !beside->at(0).isLower();
        if (auto name = readable ? readName(*beside, NameEvidence::Signed) : std::nullopt) {
            return name;
        }
        if (auto name = nameIn(lines, index, 2, NameEvidence::Signed)) {
            return name;
        }
    }
    return std::nullopt;
}

/// A telephone number or an address.
bool isContactLine(const QString& line)
{
    constexpr int numberLength = 6;
    const auto digits = std::count_if(line.begin(), line.end(), [](QChar character) { return character.isDigit(); });
    return digits >= numberLength || line.contains(u'@');
}

/// A name in the last paragraph: the only line, or below a line that closes in words not known here, or a whole name
/// above what belongs to a signature.
std::optional<PersonName> nameAtEnd(const std::vector<Line>& lines)
{
    std::size_t start = lines.size();
    while (start > 0 && !lines[--start].afterBlank) {
    }
    const std::size_t count = lines.size() - start;
    const auto first = lines.begin() + static_cast<std::ptrdiff_t>(start);
    const auto isLong = [](const Line& line) { return line.text.size() > shortLine; };
    const auto isContact = [](const Line& line) { return isContactLine(line.text); };
    if (start == 0 || std::any_of(first, lines.end(), isLong) || lines[start - 1].text.endsWith(u':')) {
        return std::nullopt;
    }
    if (count == 2 && first->text.endsWith(u',')) {
        return readName(lines.back().text, NameEvidence::Alone);
    }
    auto name = readName(first->text, NameEvidence::Alone);
    const bool signature = name && !name->family.isEmpty() && std::any_of(first + 1, lines.end(), isContact);
    return count == 1 || signature ? name : std::nullopt;
}

} // namespace

std::optional<PersonName> senderName(const QString& text)
{
    const QStringList all = ownLinesAndSignature(text);
    const auto mark = std::find_if(all.begin(), all.end(), isSignatureMark);
    const QStringList body(all.begin(), mark);
    const std::vector<Line> bodyLines = linesOf(body.mid(std::max<qsizetype>(0, body.size() - lookedAtLines)));
    const std::vector<Line> signature = linesOf(QStringList(mark == all.end() ? mark : mark + 1, all.end()));
    // A formula may be the last thing above the mark, its name the first below.
    std::vector<Line> both = bodyLines;
    both.insert(both.end(), signature.begin(), signature.begin() + std::min<std::ptrdiff_t>(std::ssize(signature), 3));
    if (auto name = nameBySignOff(both)) {
        return name;
    }
    if (auto name = nameAtEnd(bodyLines)) {
        return name;
    }
    return nameIn(signature, 0, 2, NameEvidence::Alone);
}

} // namespace quillmate::server
