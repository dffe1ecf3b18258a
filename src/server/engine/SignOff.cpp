#include "server/engine/SignOff.h"

#include "server/engine/WordPatterns.h"

namespace quillmate::server
{

namespace
{

constexpr qsizetype longestSignOff = 120;
// "Thank you very much!" closes; a longer sentence of thanks may open the message.
constexpr qsizetype longestExclamation = 12;

/// Ends every letter, whatever follows.
const QRegularExpression& regards()
{
    static const QRegularExpression formula = wordPattern(QStringLiteral(
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
    return formula;
}

/// Ends a letter where it ends a line, but what follows without a comma may name the reader ("Thanks Tom").
const QRegularExpression& courtesies()
{
    static const QRegularExpression formula = wordPattern(
        QStringLiteral("^((many |with )?thanks|thank you|(i |we )?(am |are )?look(ing)? forward|talk (to you "
                       ")?soon|see you|(viel|herzlich|best)en dank|danke|bis (bald|dann|morgen)|(un grand )?merci|à "
                       "(bientôt|demain|plus)|bonne (journée|soirée|semaine)|belle journée|dans l['’]attente|(muchas "
                       ")?gracias|hasta (pronto|luego|mañana)|quedo a|(en|a) la espera|شكرا)\\b"));
    return formula;
}

QString withoutPunctuation(const QString& text)
{
    static const QRegularExpression marks(QStringLiteral("^[\\s,،、.!–—-]+|[\\s,،、]+$"));
    return QString(text).remove(marks);
}

} // namespace

std::optional<QString> signOff(const QString& line)
{
    const QString text = line.trimmed();
    if (text.isEmpty() || text.size() > longestSignOff) {
        return std::nullopt;
    }
    auto match = regards().match(text);
    const bool always = match.hasMatch();
    if (!always) {
        match = courtesies().match(text);
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

} // namespace quillmate::server
