#include "server/engine/SentenceSigns.h"

#include "server/engine/Sentences.h"
#include "server/engine/WordPatterns.h"

namespace quillmate::server
{

namespace
{

constexpr double requestWeight = 0.8;
constexpr double questionWeight = 0.5;
constexpr double changeWeight = 0.5;
constexpr double dateWeight = 0.4;
constexpr double timeWeight = 0.3;
constexpr double amountWeight = 0.5;
constexpr qsizetype longestFormula = 160;

bool hasDate(const QString& sentence)
{
    static const QRegularExpression date = wordPattern(QStringLiteral(
        "\\b((mon|tues|wednes|thurs|fri|satur|sun)day|tomorrow|(montag|dienstag|mittwoch|donnerstag|freitag|samstag|"
        "sonnabend|sonntag)|(lundi|mardi|mercredi|jeudi|vendredi|samedi|dimanche)|demain|(lunes|martes|miércoles|"
        "jueves|viernes|sábado|domingo)|\\d{1,2}(st|nd|rd|th|\\.|er)? (de "
        ")?(jan|feb|fév|mar|mär|avr|apr|abr|ma[iy]|jui|jun|jul|ao[uû]|aug|ago|sep|o[ck]t|nov|d[eéi][czc])\\p{L}*|("
        "january|february|march|april|may|june|july|august|september|october|november|december) "
        "\\d{1,2}|\\d{1,4}[./-]\\d{1,2}[./"
        "-]\\d{2,4}|\\d{1,2}\\.\\d{1,2}\\.)|\\d{1,2}月|[月火水木金土日]曜|明日|(الاثنين|الإثنين|الثلاثاء|الأربعاء|"
        "الخميس|الجمعة|السبت|الأحد|غدا)"));
    return sentence.contains(date);
}

bool hasTime(const QString& sentence)
{
    static const QRegularExpression time = wordPattern(QStringLiteral(
        "\\b(\\d{1,2}[:h]\\d{2}|\\d{1,2}(\\.\\d{2})? "
        "?([ap]\\.?m\\b|uhr|o['’]clock|heures)|noon|midday|midnight|midi|mediodía|mittags?)|\\d{1,2}時|正午|الساعة"));
    return sentence.contains(time);
}

} // namespace

double weightOfSigns(const QString& sentence)
{
    static const QRegularExpression request = wordPattern(
        QStringLiteral("\\b(please|kindly|(could|can|would|will) you|let (me|us) know|make "
                       "sure|deadline|bitte|(könnten|können|würden) sie|(kannst|könntest) du|frist|merci "
                       "de|veuillez|(pourriez|pouvez)[- ]vous|s['’]il (vous|te) plaît|por "
                       "favor|(podría|puede|podrías|puedes)|rogamos)\\b|ください|下さい|いただけ|يرجى|الرجاء|من فضلك"));
    // Something is no longer as it was planned.
    static const QRegularExpression change = wordPattern(QStringLiteral(
        "\\b(therefore|moves?|moved|postponed?|delayed|cancel(l?ed)?|rescheduled?|changed?|instead|deshalb|daher|"
        "verschieb\\w+|verschoben|verlegt|abgesagt|geändert|donc|reporte?r?|reportée?s?|annulée?s?|déplacée?s?|por (lo "
        ")?tanto|aplaza\\w*|cancelad[oa]s?|cambia\\w*)\\b|変更|延期|中止|تأجيل|إلغاء|تغيير"));
    return (sentence.contains(request) ? requestWeight : 0) + (isQuestion(sentence) ? questionWeight : 0) +
           (sentence.contains(change) ? changeWeight : 0) + (hasDate(sentence) ? dateWeight : 0) +
           (hasTime(sentence) ? timeWeight : 0) + (namesAmount(sentence) ? amountWeight : 0);
}

bool namesTime(const QString& sentence)
{
    return hasDate(sentence) || hasTime(sentence);
}

bool namesAmount(const QString& sentence)
{
    static const QRegularExpression amount = wordPattern(QStringLiteral(
        "[$€£¥]\\s?\\d|(\\d|\\b(one|two|three|four|five|six|seven|eight|nine|ten|twenty))\\s?(€|\\$|£|¥|%|円|(eur|"
        "euros?|usd|dollars?|gbp|pounds|chf|francs?|per ?cent|prozent|pour cent|por ciento)\\b|يورو|دولار)"));
    return sentence.contains(amount);
}

bool isClosingFormula(const QString& sentence)
{
    static const QRegularExpression closing = wordPattern(QStringLiteral(
        "^((with )?(my |our )?((kind|best|warm|many)(est)? )?(regards|wishes)\\b|yours "
        "(sincerely|faithfully|truly)|sincerely\\b|(i |we )?(am |are )?look(ing)? forward to|(many )?thanks?( you)?( "
        "very much| so much)? (for your|in advance)|mit \\w+ gr(ü|ue)(ß|ss)|\\w+ gr(ü|ue)(ß|ss)e\\b|vielen dank (im "
        "voraus|für ihr)|(bien )?cordialement|(meilleures|sincères) salutations|(veuillez|je vous prie|nous vous "
        "prions)\\b.*\\b(salutations|sentiments)|dans l['’]attente de|(un )?(cordial(es)? "
        ")?saludos?\\b|atentamente|reciban? un|if you have any (further |other )?questions|bei (rück)?fragen\\b|pour "
        "toute question|si tiene (alguna|cualquier) "
        "(pregunta|duda)|ご不明な点|(以上、?)?(どうぞ|何卒|今後とも|引き続き)?(よろしく|宜しく)(ご\\w+の?ほど)?お願い|"
        "敬具|مع (أطيب|خالص|فائق|تحيات|التحي)|تحياتي|وتفضلوا|تفضلوا)"));
    static const QRegularExpression footer = wordPattern(QStringLiteral(
        "\\bunsubscribe\\b|newsletter.* ab(zu)?bestellen|vom newsletter ab|désabonner|désinscrire|darse de "
        "baja|cancelar (la|su) suscripción|配信停止|إلغاء الاشتراك|view (this|it)\\b.* in (your|a) browser|\\byou (are "
        "receiving|receive|received|have received) this (e-?mail|message|newsletter)|^this (e-?mail|message) (and "
        "any|is confidential|may contain)|manage your (e-?mail )?(preferences|subscription)"));
    if (sentence.contains(footer) && !isQuestion(sentence)) {
        return true;
    }
    // One that names a day ("I look forward to seeing you on Friday.") says something.
    return sentence.size() <= longestFormula && sentence.contains(closing) && !hasDate(sentence);
}

bool isListItem(const QString& sentence)
{
    static const QRegularExpression item(QStringLiteral("^\\s*([-*•–·▪]|\\d{1,2}[.)]|[a-z]\\))\\s+\\S"));
    return sentence.contains(item);
}

} // namespace quillmate::server
