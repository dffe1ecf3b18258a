#include "server/engine/ExtractiveSummary.h"

#include "server/engine/ContentWords.h"
#include "server/engine/SentenceSigns.h"
#include "server/engine/Sentences.h"
#include "server/engine/TextRank.h"

#include <algorithm>
#include <vector>

namespace quillmate::server
{

namespace
{

constexpr qsizetype rankedSentences = 400;
constexpr std::size_t summarySentences = 5;
constexpr std::size_t wholeMessageSentences = 2;

/// What a summary is chosen from: the sentences that say something, a list with the line that leads it in as one.
/// Lists that would fill the summary are left out.
QStringList summaryCandidates(const QStringList& all)
{
    constexpr qsizetype longestList = 5;
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

QStringList extractiveSummary(const QString& text)
{
    const QStringList all = sentences(text, rankedSentences);
    if (all.size() <= static_cast<qsizetype>(wholeMessageSentences)) {
        return {text};
    }
    const QStringList candidates = summaryCandidates(all);
    return ranked(candidates, summaryLength(candidates.size()));
}

QString mainSentence(const QString& text)
{
    QStringList telling;
    for (const QString& sentence : sentences(text, rankedSentences)) {
        if (hasContent(sentence)) {
            telling.append(sentence);
        }
    }
    return ranked(telling, 1).value(0);
}

} // namespace quillmate::server
