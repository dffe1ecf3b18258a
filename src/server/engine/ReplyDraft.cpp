#include "server/engine/ReplyDraft.h"

#include "mail/QuotedText.h"
#include "server/engine/ExtractiveSummary.h"
#include "server/engine/MessageQuestions.h"
#include "server/engine/ReplyWords.h"
#include "server/engine/SenderName.h"

#include <QStringList>

namespace quillmate::server
{

namespace
{

constexpr qsizetype answeredQuestions = 5;
constexpr qsizetype longestQuote = 160;

} // namespace

QString replyDraft(const QString& text, const QString& userName)
{
    const QString own = ownText(text);
    const Language language = languageOf(own);
    const Tone tone = toneOf(own, language);
    const ReplyPhrases& phrases = replyPhrases(language, tone);
    QStringList quotes = questionsIn(own, answeredQuestions);
    QString leadIn = quotes.size() > 1 ? phrases.questions : phrases.question;
    if (quotes.isEmpty()) {
        leadIn = phrases.about;
        quotes = QStringList(mainSentence(own));
        quotes.removeAll(QString());
    }
    QStringList lines = {greeting(language, tone, senderName(text)), QString(), phrases.thanks, QString()};
    if (quotes.isEmpty()) {
        lines += {phrases.answerHere, QString()};
    } else {
        lines.append(leadIn);
    }
    for (const QString& quote : quotes) {
        const QString line = QString(quote).replace(u'\n', u' ');
        lines +=
            {phrases.openQuote + shortened(line, longestQuote) + phrases.closeQuote, phrases.answerHere, QString()};
    }
    lines.append(phrases.closing);
    if (!userName.isEmpty()) {
        lines.append(userName);
    }
    return lines.join(u'\n');
}

} // namespace quillmate::server
