#include "mail/QuotedText.h"

#include <QRegularExpression>
#include <QStringList>

#include <algorithm>

namespace quillmate
{

namespace
{

constexpr auto insensitive = QRegularExpression::CaseInsensitiveOption;
constexpr qsizetype longestAttribution = 3;
constexpr qsizetype longestHeaderBlock = 8;

bool matches(const QRegularExpression& expression, const QString& line)
{
    return line.size() < 400 && expression.match(line).hasMatch();
}

/// "-----Original Message-----" and its kin: what follows is an earlier message.
bool isSeparator(const QString& line)
{
    static const QRegularExpression expression(
        QStringLiteral(
            "^\\s*[-_*]{2,}\\s*(original message|original appointment|forwarded message|ursprüngliche nachricht|"
            "originalnachricht|original-nachricht|weitergeleitete nachricht|message d['’]origine|message original|"
            "message transféré|mensaje original|mensaje reenviado|messaggio originale|mensagem original|"
            "元のメッセージ|転送メッセージ|الرسالة الأصلية|رسالة معاد توجيهها)\\s*[-_*]{2,}\\s*$|"
            "^\\s*(begin forwarded message|anfang der weitergeleiteten nachricht)\\s*:\\s*$"),
        insensitive);
    return matches(expression, line);
}

/// "On … wrote:" on one line.
bool isAttribution(const QString& line)
{
    static const QRegularExpression expression(
        QStringLiteral(
            "^\\s*(on\\b.*\\bwrote|am\\b.*\\bschrieb\\b.*|.*\\bschrieb (am|im)\\b.*|le\\b.*\\ba écrit|"
            "el\\b.*\\bescribió|il\\b.*\\bha scritto|em\\b.*\\bescreveu|.*\\d.*(のメール|さんは書きました|書きました)|"
            "(في|بتاريخ|يوم).*كتب.*)\\s*[:：]\\s*$"),
        insensitive);
    return matches(expression, line);
}

bool isHeaderField(const QString& line, bool sender)
{
    static const QRegularExpression from(
        QStringLiteral("^\\s*\\**(from|von|de|da|差出人|送信者|من)\\**\\s?[:：]\\**\\s*\\S"), insensitive);
    static const QRegularExpression other(
        QStringLiteral(
            "^\\s*\\**(sent|date|to|subject|gesendet|datum|an|betreff|envoyé|à|objet|enviado|fecha|para|asunto|"
            "inviato|oggetto|送信日時|日時|宛先|件名|تاريخ الإرسال|التاريخ|إلى|الموضوع)( le| el)?\\**\\s?[:：]"),
        insensitive);
    return matches(sender ? from : other, line);
}

/// The header block that some programs put over the message they answer: a sender, then at least two more fields.
bool isHeaderBlock(const QStringList& lines, qsizetype index)
{
    if (!isHeaderField(lines[index], true)) {
        return false;
    }
    int others = 0;
    for (qsizetype next = index + 1; next < std::min(lines.size(), index + longestHeaderBlock); ++next) {
        others += isHeaderField(lines[next], false) ? 1 : 0;
    }
    return others >= 2;
}

/// A mark of a signature, or the rule that mailing lists put over their footer.
bool isSignatureStart(const QString& line)
{
    static const QRegularExpression rule(QStringLiteral("^_{20,}\\s*$"));
    return isSignatureMark(line) || matches(rule, line);
}

bool isPhoneFooter(const QString& line)
{
    static const QRegularExpression expression(
        QStringLiteral("^\\s*(sent (from|with) (my |proton|yahoo|outlook|mail for|the all)|get outlook for|"
                       "(von|mit) mein\\w+ .{2,40} gesendet|gesendet (von|mit) |diese nachricht wurde von mein|"
                       "envoyé (de|depuis) (mon|ma|l)|télécharger outlook|enviado desde mi|obtener outlook|"
                       "inviato da(l| )|.{0,20}(iphone|ipad|android).{0,12}から送信|"
                       "(أرسلت|أُرسلت|مرسل|تم الإرسال|أرسل) من )"),
        insensitive);
    return line.size() < 80 && matches(expression, line);
}

bool isBarred(const QString& line)
{
    return line.trimmed().startsWith(u'|');
}

/// Whether the lines that begin with "|" are quotes: none of them has a "|" further on, as the rows of a table have,
/// and the line above the first names a sender or a time.
bool quotesWithBars(const QStringList& lines)
{
    static const QRegularExpression row(QStringLiteral("^\\s*[|\\s]*[^|\\s].*\\|"));
    static const QRegularExpression introduction(QStringLiteral("(\\d{1,4}[.:/年-]|\\S@\\S).*[:：]\\s*$"));
    QString above;
    bool found = false;
    bool introduced = false;
    for (const QString& line : lines) {
        if (isBarred(line)) {
            introduced = introduced || (!found && (isAttribution(above) || matches(introduction, above)));
            found = true;
            if (row.match(line.left(400)).hasMatch()) {
                return false;
            }
        } else if (!line.trimmed().isEmpty()) {
            above = line;
        }
    }
    return introduced;
}

bool isQuoted(const QString& line, bool bars)
{
    return line.trimmed().startsWith(u'>') || (bars && isBarred(line));
}

/// Takes away the lines that introduce a quote, where they stand directly above it.
void dropAttribution(QStringList& kept)
{
    while (!kept.isEmpty() && kept.last().trimmed().isEmpty()) {
        kept.removeLast();
    }
    const bool introduces =
        !kept.isEmpty() && (kept.last().trimmed().endsWith(u':') || kept.last().trimmed().endsWith(u'：'));
    if (!introduces) {
        return;
    }
    static const QRegularExpression dateOrAddress(QStringLiteral("\\d{1,4}[.:/年-]|\\S@\\S"));
    QString joined;
    qsizetype plausible = 0;
    for (qsizetype count = 1; count <= std::min(longestAttribution, kept.size()); ++count) {
        const QString line = kept[kept.size() - count].trimmed();
        if (line.isEmpty()) {
            break;
        }
        joined = line + u' ' + joined;
        if (isAttribution(joined)) {
            kept.resize(kept.size() - count);
            return;
        }
        // In a language that is not known here, an attribution still names a time or an address.
        const bool begins = line[0].isLetterOrNumber() && !line[0].isLower();
        if (plausible == 0 && begins && joined.size() < 200 && dateOrAddress.match(joined).hasMatch()) {
            plausible = count;
        }
    }
    kept.resize(kept.size() - plausible);
}

QStringList ownLines(const QStringList& lines, bool withSignature)
{
    const bool bars = quotesWithBars(lines);
    QStringList kept;
    for (qsizetype index = 0; index < lines.size(); ++index) {
        const QString& line = lines[index];
        if (isQuoted(line, bars)) {
            dropAttribution(kept);
            continue;
        }
        // An attribution may be broken over two lines; what follows it here is not marked as a quote.
        const bool attribution =
            isAttribution(line) || (index + 1 < lines.size() && line.size() < 200 && !line.isEmpty() &&
                                    isAttribution(line.trimmed() + u' ' + lines[index + 1].trimmed()));
        const bool quoteFollows =
            std::any_of(lines.begin() + index + 1, lines.begin() + std::min(lines.size(), index + 5),
                        [bars](const QString& next) { return isQuoted(next, bars); });
        const bool signature = isSignatureStart(line) && !(withSignature && isSignatureMark(line));
        if (signature || isSeparator(line) || isHeaderBlock(lines, index) || (attribution && !quoteFollows)) {
            break;
        }
        if (!isPhoneFooter(line)) {
            kept.append(line);
        }
    }
    return kept;
}

QString unquoted(const QStringList& lines)
{
    static const QRegularExpression angles(QStringLiteral("^\\s*(>\\s?)+"));
    static const QRegularExpression anglesAndBars(QStringLiteral("^\\s*([>|]\\s?)+"));
    const QRegularExpression& marks = quotesWithBars(lines) ? anglesAndBars : angles;
    QStringList texts;
    for (const QString& line : lines) {
        if (!isSeparator(line) && !isHeaderField(line, true) && !isHeaderField(line, false) &&
            !isSignatureStart(line)) {
            texts.append(QString(line).remove(marks));
        }
    }
    return texts.join(u'\n').trimmed();
}

} // namespace

QString ownText(const QString& text)
{
    const QStringList lines = text.split(u'\n');
    const QString own = ownLines(lines, false).join(u'\n').trimmed();
    return own.isEmpty() ? unquoted(lines) : own;
}

QStringList ownLinesAndSignature(const QString& text)
{
    return ownLines(text.split(u'\n'), true);
}

bool isSignatureMark(const QString& line)
{
    return line == QStringLiteral("--") || line == QStringLiteral("-- ");
}

} // namespace quillmate
