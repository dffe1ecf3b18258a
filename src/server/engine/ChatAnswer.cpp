#include "server/engine/ChatAnswer.h"

#include "server/engine/ChatPhrases.h"
#include "server/engine/ChatQuestion.h"
#include "server/engine/ExtractiveSummary.h"
#include "server/engine/Relevance.h"
#include "server/engine/SentenceSigns.h"
#include "server/engine/Sentences.h"

#include <QSet>

#include <algorithm>
#include <optional>

namespace quillmate::server
{

namespace
{

constexpr qsizetype consideredSentences = 5000;
constexpr qsizetype consideredQuestion = 4000;
constexpr std::size_t answerSentences = 3;
// A sentence that fits far worse than the best one is no answer.
constexpr double worstShare = 0.4;
// A day answers "when" better than a sentence without one.
constexpr double wantedWeight = 2;

using Wants = ChatQuestion::Wants;

/// What was said before in the chat.
struct Memory {
    QSet<QString> quoted; ///< lines of earlier answers
    std::vector<ChatQuestion> questions;
    QString asked; ///< their texts as they were written

    explicit Memory(const std::vector<ThreadMessage>& earlier)
    {
        for (const ThreadMessage& message : earlier) {
            const QString text = QString::fromStdString(message.text);
            if (message.role == ThreadMessage::Role::Assistant) {
                const QStringList lines = text.split(u'\n');
                quoted.unite({lines.begin(), lines.end()});
            } else {
                questions.push_back(readQuestion(text));
                asked += text.left(consideredQuestion) + u' ';
            }
        }
    }

    /// The last question that says what it is about.
    [[nodiscard]] const ChatQuestion* topic() const
    {
        const auto found = std::find_if(questions.rbegin(), questions.rend(),
                                        [](const ChatQuestion& one) { return !one.words.isEmpty(); });
        return found == questions.rend() ? nullptr : &*found;
    }

    [[nodiscard]] bool wasAsked(const ChatQuestion& question) const
    {
        return std::any_of(questions.begin(), questions.end(), [&](const ChatQuestion& one) {
            return one.text == question.text ||
                   (!one.words.isEmpty() && one.words == question.words && one.wants == question.wants);
        });
    }
};

bool offers(const QString& sentence, Wants wants)
{
    switch (wants) {
    case Wants::Time:
        return namesTime(sentence);
    case Wants::Amount:
        return namesAmount(sentence);
    case Wants::Number:
        return std::any_of(sentence.begin(), sentence.end(), [](QChar character) { return character.isDigit(); });
    case Wants::Anything:
        break;
    }
    return false;
}

/// The fitting sentences, the best first.
std::vector<Match> ranked(const QStringList& sentences, const QStringList& words, Wants wants)
{
    std::vector<Match> matches = relevantSentences(sentences, words);
    for (Match& match : matches) {
        match.score *= offers(sentences[match.index], wants) ? wantedWeight : 1;
    }
    std::stable_sort(matches.begin(), matches.end(), [](const Match& a, const Match& b) { return a.score > b.score; });
    return matches;
}

/// The texts of the first few, in the message's order.
QStringList firstFew(std::vector<Match> matches, const QStringList& sentences)
{
    const double worst = matches.empty() ? 0 : worstShare * matches.front().score;
    std::erase_if(matches, [worst](const Match& match) { return match.score < worst; });
    matches.resize(std::min(matches.size(), answerSentences));
    std::sort(matches.begin(), matches.end(), [](const Match& a, const Match& b) { return a.index < b.index; });
    QStringList texts;
    for (const Match& match : matches) {
        texts.append(sentences[match.index]);
    }
    return texts;
}

QString withLead(const QString& lead, const QStringList& lines)
{
    return lead + u'\n' + lines.join(u'\n');
}

QString answerFromSentences(const QStringList& all, const ChatQuestion& question, const Memory& memory,
                            const ChatPhrases& phrases)
{
    const ChatQuestion* topic = question.pointsBack ? memory.topic() : nullptr;
    // The question's own words weigh twice.
    const QStringList words = topic == nullptr ? question.words : question.words + question.words + topic->words;
    const bool inherits = question.goesOn && question.wants == Wants::Anything && !memory.questions.empty();
    const Wants wants = inherits ? memory.questions.back().wants : question.wants;
    std::vector<Match> matches = ranked(all, words, wants);
    const auto lacks = [&](const Match& match) { return !offers(all[match.index], wants); };
    // "What does it cost?" says no more than that it wants an amount.
    const bool wantsOnly = words.isEmpty() || (matches.empty() && wants == Wants::Amount && question.words.size() == 1);
    if (wantsOnly) {
        // "When?" with nothing before it: whatever day the message names.
        for (qsizetype index = 0; index < all.size(); ++index) {
            matches.push_back({index, 1});
        }
        std::erase_if(matches, lacks);
    } else if (topic != nullptr && !std::all_of(matches.begin(), matches.end(), lacks)) {
        std::erase_if(matches, lacks);
    }
    const QStringList best = firstFew(matches, all);
    if (best.isEmpty()) {
        return phrases.notFound;
    }
    const auto wasQuoted = [&](const QString& sentence) { return memory.quoted.contains(sentence); };
    const bool asksOn = question.words.isEmpty() && wants == Wants::Anything;
    if ((asksOn || memory.wasAsked(question)) && std::all_of(best.begin(), best.end(), wasQuoted)) {
        std::erase_if(matches, [&](const Match& match) { return wasQuoted(all[match.index]); });
        return matches.empty() ? withLead(phrases.noMore, best) : withLead(phrases.more, firstFew(matches, all));
    }
    return withLead(topic == nullptr ? phrases.found : phrases.foundForEarlier, best);
}

} // namespace

QString chatAnswer(const QString& text, const std::vector<ThreadMessage>& earlier, const std::string& question)
{
    const QString written = QString::fromStdString(question).left(consideredQuestion);
    const ChatQuestion asked = readQuestion(written);
    const Memory memory(earlier);
    // A short question may not show its language; those before it and the message then do.
    const ChatPhrases& phrases = chatPhrases(languageOf(written, languageOf(memory.asked, languageOf(text))));
    if (text.trimmed().isEmpty()) {
        return phrases.noMessage;
    }
    if (asked.kind == ChatQuestion::Kind::Courtesy) {
        return phrases.courtesy;
    }
    if (asked.kind == ChatQuestion::Kind::Overview) {
        const QString overview = withLead(phrases.found, extractiveSummary(text));
        const bool given = std::any_of(earlier.begin(), earlier.end(), [&](const ThreadMessage& message) {
            return message.text == overview.toStdString();
        });
        return given ? withLead(phrases.noMore, extractiveSummary(text)) : overview;
    }
    return answerFromSentences(sentences(text, consideredSentences), asked, memory, phrases);
}

} // namespace quillmate::server
