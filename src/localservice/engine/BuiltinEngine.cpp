#include "localservice/engine/BuiltinEngine.h"

#include "localservice/engine/Language.h"
#include "localservice/engine/MailText.h"
#include "localservice/engine/Phrases.h"
#include "localservice/engine/QuotedText.h"
#include "localservice/engine/Relevance.h"
#include "localservice/engine/SentenceSigns.h"
#include "localservice/engine/Sentences.h"
#include "localservice/engine/TextRank.h"
#include "localservice/engine/Words.h"

#include <algorithm>
#include <vector>

namespace quillmate::localservice
{

namespace
{

constexpr qsizetype consideredSentences = 400;
constexpr qsizetype consideredCharacters = 200'000;
constexpr std::size_t summarySentences = 5;
constexpr std::size_t wholeMessageSentences = 2;
constexpr qsizetype answeredQuestions = 5;
constexpr qsizetype answerSentences = 3;

QString ownTextOf(const std::string& mail)
{
    return ownText(mailText(mail).left(consideredCharacters));
}

/// The sentences that say something; where none does, all of them.
QStringList contentSentences(const QString& text)
{
    const QStringList all = sentences(text, consideredSentences);
    QStringList kept;
    for (const QString& sentence : all) {
        if (hasContent(sentence)) {
            kept.append(sentence);
        }
    }
    return kept.isEmpty() ? all : kept;
}

/// What a summary is chosen from: the sentences that say something, a list with the line that leads it in as one.
/// Lists that would fill the summary are left out.
QStringList summaryCandidates(const QString& text)
{
    constexpr qsizetype longestList = 5;
    const QStringList all = sentences(text, consideredSentences);
    QStringList candidates;
    for (qsizetype index = 0; index < all.size(); ++index) {
        const bool leadsIn = index + 1 < all.size() && isListItem(all[index + 1]) && all[index].endsWith(u':');
        qsizetype end = leadsIn ? index + 1 : index;
        // An item may go on with a second sentence.
        while (end < all.size() && (isListItem(all[end]) || (end > index && end + 1 < all.size() &&
                                                             isListItem(all[end - 1]) && isListItem(all[end + 1])))) {
            ++end;
        }
        if (end <= index + 1) {
            if (hasContent(all[index])) {
                candidates.append(all[index]);
            }
            continue;
        }
        if (end - index <= longestList) {
            candidates.append(all.mid(index, end - index).join(u'\n'));
        }
        index = end - 1;
    }
    return candidates.isEmpty() ? all : candidates;
}

QStringList ranked(const QStringList& candidates, std::size_t count)
{
    std::vector<QStringList> words;
    std::vector<double> weights;
    for (const QString& sentence : candidates) {
        words.push_back(contentWords(sentence));
        weights.push_back(weightOfSigns(sentence));
    }
    QStringList chosen;
    for (const std::size_t index : bestSentences(words, count, weights)) {
        chosen.append(candidates[static_cast<qsizetype>(index)]);
    }
    return chosen;
}

/// A third of the message, so that a short one is not repeated nearly whole.
std::size_t summaryLength(qsizetype sentenceCount)
{
    const std::size_t third = (static_cast<std::size_t>(sentenceCount) + 2) / 3;
    return std::clamp(third, wholeMessageSentences, summarySentences);
}

} // namespace

std::string BuiltinEngine::summarize(const std::string& mail) const
{
    const QString text = ownTextOf(mail);
    if (text.isEmpty()) {
        return "This message has no text that can be summarized.";
    }
    if (sentences(text, consideredSentences).size() <= static_cast<qsizetype>(wholeMessageSentences)) {
        return text.toStdString();
    }
    const QStringList candidates = summaryCandidates(text);
    return ranked(candidates, summaryLength(candidates.size())).join(u'\n').toStdString();
}

std::string BuiltinEngine::reply(const std::string& mail) const
{
    const QString text = ownTextOf(mail);
    const Phrases& phrases = phrasesIn(languageOf(text));
    const QStringList candidates = contentSentences(text);
    QStringList lines = {phrases.greeting, QString(), phrases.thanks};
    QStringList questions;
    std::copy_if(candidates.begin(), candidates.end(), std::back_inserter(questions), isQuestion);
    questions = questions.mid(0, answeredQuestions);
    if (!questions.isEmpty()) {
        lines += {QString(), phrases.questions};
        for (const QString& question : questions) {
            lines += {phrases.openQuote + question + phrases.closeQuote, phrases.answerHere};
        }
    } else if (!candidates.isEmpty()) {
        const QString main = ranked(candidates, 1).join(u' ');
        lines += {QString(), phrases.about, phrases.openQuote + main + phrases.closeQuote, phrases.answerHere};
    }
    lines += {QString(), phrases.closing, QString(), phrases.modelNote};
    return lines.join(u'\n').toStdString();
}

std::string BuiltinEngine::readableText(const std::string& mail) const
{
    return ownTextOf(mail).toStdString();
}

std::string BuiltinEngine::answer(const std::string& text, const std::string& question) const
{
    const QString asked = QString::fromStdString(question);
    const QStringList candidates = sentences(QString::fromStdString(text), consideredSentences);
    const QStringList relevant = relevantSentences(candidates, asked.left(consideredCharacters), answerSentences);
    // The answer's own words are in the question's language where that shows, as the user reads it.
    const Phrases& phrases = phrasesIn(languageOf(asked));
    const QString body = relevant.isEmpty() ? phrases.notFound : phrases.found + u'\n' + relevant.join(u'\n');
    return (body + QStringLiteral("\n\n") + phrases.modelNote).toStdString();
}

} // namespace quillmate::localservice
