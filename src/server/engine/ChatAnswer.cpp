#include "server/engine/ChatAnswer.h"

#include "server/engine/ChatQuestion.h"
#include "server/engine/ExtractiveSummary.h"
#include "server/engine/Language.h"
#include "server/engine/Relevance.h"
#include "server/engine/SentenceSigns.h"
#include "server/engine/Sentences.h"

#include <QSet>

#include <algorithm>
#include <array>

namespace quillmate::server
{

using namespace Qt::StringLiterals;

namespace
{

constexpr qsizetype searchedSentences = 5000;
constexpr std::size_t answerSentences = 3;
// A sentence that fits far worse than the best one is no answer.
constexpr double worstShare = 0.4;
// A day answers "when" better than a sentence without one.
constexpr double wantedWeight = 2;

using Wants = ChatQuestion::Wants;

/// The engine's own sentences in a chat.
struct ChatPhrases {
    /// Leads in the sentences that answer a question.
    QString found;
    /// The same, for a question that is understood by an earlier one.
    QString foundForEarlier;
    /// Leads in further sentences, for a question that was answered before.
    QString more;
    /// Leads in the same sentences once more, for want of others.
    QString noMore;
    QString notFound;
    QString noMessage;
    /// For a greeting and for thanks.
    QString courtesy;
};

const ChatPhrases& chatPhrases(Language language)
{
    // In the order of the languages.
    static const std::array<ChatPhrases, 6> all = {
        ChatPhrases{
            u"The message says:"_s, u"On what you asked before, the message says:"_s, u"The message also says:"_s,
            u"I find no more on this in the message than:"_s,
            u"Nothing in the message fits this question. I work without a language model and look for its words, so other words may help."_s,
            u"There is no message with a text here, so I have nothing to look at."_s,
            u"I am glad to help: ask me anything about the message."_s},
        ChatPhrases{
            u"In der Nachricht steht:"_s, u"Zu dem, was Sie vorhin gefragt haben, steht in der Nachricht:"_s,
            u"In der Nachricht steht außerdem:"_s, u"Mehr als das finde ich dazu nicht in der Nachricht:"_s,
            u"Nichts in der Nachricht passt zu dieser Frage. Ich arbeite ohne Sprachmodell und suche nach ihren Wörtern; mit anderen Wörtern klappt es vielleicht."_s,
            u"Hier ist keine Nachricht mit Text, die ich ansehen könnte."_s,
            u"Gern. Fragen Sie mich, was Sie über die Nachricht wissen möchten."_s},
        ChatPhrases{
            u"Le message dit\u00A0:"_s, u"Sur ce que vous avez demandé plus tôt, le message dit\u00A0:"_s,
            u"Le message dit aussi\u00A0:"_s, u"Je ne trouve rien de plus à ce sujet dans le message que\u00A0:"_s,
            u"Rien dans le message ne répond à cette question. Je travaille sans modèle de langage et je cherche ses mots\u00A0: essayez-en d’autres."_s,
            u"Il n’y a pas ici de message avec un texte que je puisse regarder."_s,
            u"Avec plaisir\u00A0: demandez-moi ce que vous voulez savoir sur le message."_s},
        ChatPhrases{
            u"El mensaje dice:"_s, u"Sobre lo que preguntó antes, el mensaje dice:"_s, u"El mensaje dice además:"_s,
            u"No encuentro más sobre esto en el mensaje que:"_s,
            u"Nada en el mensaje responde a esta pregunta. Trabajo sin modelo de lenguaje y busco sus palabras: pruebe con otras."_s,
            u"Aquí no hay ningún mensaje con texto que pueda mirar."_s,
            u"Con mucho gusto: pregúnteme lo que quiera saber sobre el mensaje."_s},
        ChatPhrases{
            u"メッセージには次のように書かれています："_s,
            u"先ほどのご質問について、メッセージには次のように書かれています："_s,
            u"メッセージにはほかにこう書かれています："_s, u"これについてメッセージで見つかるのは次の内容だけです："_s,
            u"この質問に当てはまる内容はメッセージにありません。言語モデルを使わずに言葉を探していますので、別の言葉でお試しください。"_s,
            u"ここには本文のあるメッセージがありません。"_s, u"メッセージについて何でもお尋ねください。"_s},
        ChatPhrases{u"تقول الرسالة:"_s, u"عمّا سألت عنه من قبل تقول الرسالة:"_s, u"وتقول الرسالة أيضًا:"_s,
                    u"لا أجد في الرسالة حول هذا أكثر من:"_s,
                    u"لا شيء في الرسالة يناسب هذا السؤال. أعمل دون نموذج لغوي وأبحث عن الكلمات، فقد تفيد كلمات أخرى."_s,
                    u"لا توجد هنا رسالة ذات نص يمكنني النظر فيها."_s,
                    u"يسعدني أن أساعدك: اسألني عن أي شيء في الرسالة."_s}};
    return all[static_cast<std::size_t>(language)];
}

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
                asked += text + u' ';
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
    const QString written = QString::fromStdString(question);
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
    return answerFromSentences(sentences(text, searchedSentences), asked, memory, phrases);
}

} // namespace quillmate::server
