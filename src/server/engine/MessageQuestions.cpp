#include "server/engine/MessageQuestions.h"

#include "server/engine/SentenceSigns.h"
#include "server/engine/Sentences.h"
#include "server/engine/WordPatterns.h"

#include <QTextBoundaryFinder>

namespace quillmate::server
{

namespace
{

constexpr qsizetype askingSentences = 5000;

/// "Hi Tom, can you come?" without its first two words.
QString withoutGreeting(const QString& sentence)
{
    static const QRegularExpression hello = wordPattern(
        QStringLiteral("^(hi|hello|hey|dear|hallo|moin|guten tag|liebe[rs]?|bonjour|salut|ch[eè]re?|hola|buenos "
                       "días|buenas tardes|estimad[oa])\\b[^,:!?]{0,40}[,:!]\\s+(?=\\S+\\s)"));
    QString rest = sentence;
    rest.remove(hello);
    if (rest.size() < sentence.size()) {
        rest[0] = rest[0].toUpper();
    }
    return rest;
}

} // namespace

QStringList questionsIn(const QString& text, qsizetype count)
{
    QStringList whole;
    QStringList brief;
    for (const QString& sentence : sentences(text, askingSentences)) {
        if (!isQuestion(sentence) || isClosingFormula(sentence)) {
            continue;
        }
        const QString question = withoutGreeting(sentence);
        if (hasContent(question)) {
            whole.append(question);
        } else if (question.contains(u' ')) {
            brief.append(question);
        }
    }
    QStringList& found = whole.isEmpty() ? brief : whole;
    found.removeDuplicates();
    return found.mid(0, count);
}

QString shortened(const QString& text, qsizetype length)
{
    if (text.size() <= length) {
        return text;
    }
    qsizetype cut = text.lastIndexOf(u' ', length);
    if (cut < length / 2) {
        QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text.left(length + 1));
        finder.setPosition(length);
        cut = finder.isAtBoundary() ? length : finder.toPreviousBoundary();
    }
    QString kept = text.left(cut);
    while (!kept.isEmpty() && (kept.back().isSpace() || kept.back().isPunct())) {
        kept.chop(1);
    }
    return kept + u'…';
}

} // namespace quillmate::server
