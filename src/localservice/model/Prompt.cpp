#include "localservice/model/Prompt.h"

#include "localservice/Secrets.h"
#include "localservice/engine/QuotedText.h"
#include "localservice/model/PromptWords.h"
#include "localservice/model/TokenCount.h"

#include <nlohmann/json.hpp>

#include <QStringList>

#include <algorithm>

namespace quillmate::localservice
{

namespace
{

using Json = nlohmann::ordered_json;

constexpr qsizetype answerShare = 4;
constexpr qsizetype mostForAnswer = 2048;
/// Less of a message than this is not worth asking about.
constexpr qsizetype leastForText = 100;
/// What a chat template puts around a turn.
constexpr qsizetype turnFrame = 8;

struct Turn {
    const char* role = "user";
    QString text;
};

qsizetype mostOf(const Turn& turn)
{
    return mostTokens(turn.text) + turnFrame;
}

QString tokens(qsizetype count)
{
    return QStringLiteral("about %1 tokens").arg(count);
}

/// A fence that occurs in none of what the model gets to read.
QString newFence(const PromptTask& task)
{
    constexpr std::size_t length = 22; // 132 random bits
    for (;;) {
        QString fence = QStringLiteral("====%1====").arg(QString::fromStdString(randomSecret().substr(0, length)));
        if (!task.text.contains(fence) && !task.question.contains(fence)) {
            return fence;
        }
    }
}

/// The chat's turns by turns, user first, as some chat templates insist.
std::vector<Turn> alternating(const std::vector<ThreadMessage>& earlier)
{
    std::vector<Turn> turns;
    for (const ThreadMessage& message : earlier) {
        const bool user = message.role == ThreadMessage::Role::User;
        const char* role = user ? "user" : "assistant";
        const QString text = QString::fromStdString(message.text);
        if (turns.size() % 2 == (user ? 0U : 1U)) {
            turns.push_back({role, text});
        } else if (!turns.empty()) {
            turns.back().text += u'\n' + text;
        }
    }
    if (turns.size() % 2 == 1) {
        turns.pop_back(); // A question that got no answer.
    }
    return turns;
}

/// Drops the oldest pairs until the rest fits; how many turns went.
std::size_t dropOldest(std::vector<Turn>& turns, qsizetype room)
{
    qsizetype size = 0;
    std::size_t kept = 0;
    while (kept + 2 <= turns.size()) {
        const std::size_t pair = turns.size() - kept - 2;
        size += mostOf(turns[pair]) + mostOf(turns[pair + 1]);
        if (size > room) {
            break;
        }
        kept += 2;
    }
    const std::size_t dropped = turns.size() - kept;
    turns.erase(turns.begin(), turns.begin() + static_cast<std::ptrdiff_t>(dropped));
    return dropped;
}

/// The text without its quoted history, where that is too long, and without its end, where that is not enough.
QString fitted(const QString& text, qsizetype room, QStringList& cuts)
{
    const qsizetype whole = mostTokens(text);
    if (whole <= room) {
        return text;
    }
    QString rest = ownText(text);
    qsizetype size = mostTokens(rest);
    if (size < whole) {
        cuts += QStringLiteral("its quoted history (%1)").arg(tokens(whole - size));
    }
    if (size > room) {
        rest = withinTokens(rest, room);
        cuts += QStringLiteral("its end (%1)").arg(tokens(size - mostTokens(rest)));
    }
    return rest;
}

Prompt written(const std::vector<Turn>& turns)
{
    Prompt prompt;
    Json messages = Json::array();
    for (const Turn& turn : turns) {
        messages.push_back({{"role", turn.role}, {"content", turn.text.toStdString()}});
        prompt.most += mostOf(turn);
        prompt.least += leastTokens(turn.text);
    }
    prompt.messages = QByteArray::fromStdString(messages.dump(-1, ' ', false, Json::error_handler_t::replace));
    return prompt;
}

} // namespace

std::optional<Prompt> makePrompt(const PromptTask& task, qsizetype contextTokens)
{
    const QString fence = newFence(task);
    const Turn system = {"system", systemWords(task, fence)};
    const qsizetype frame = mostOf(system) + mostTokens(fencedText({}, fence, false)) + turnFrame;
    qsizetype room = contextTokens - std::min(contextTokens / answerShare, mostForAnswer) - frame;
    if (room < leastForText) {
        return std::nullopt;
    }
    QStringList cuts;
    QString question = task.question;
    if (mostTokens(question) > room / 2) {
        question = withinTokens(question, room / 2);
        cuts += QStringLiteral("the question's end (%1)").arg(tokens(mostTokens(task.question) - mostTokens(question)));
    }
    room -= mostTokens(question);

    std::vector<Turn> turns = alternating(task.earlier);
    const std::size_t dropped = dropOldest(turns, std::max(room / 2, room - mostTokens(task.text)));
    if (dropped > 0) {
        cuts += QStringLiteral("the chat's oldest %1 turns").arg(dropped);
    }
    for (const Turn& turn : turns) {
        room -= mostOf(turn);
    }
    const QString text = fitted(task.text, room, cuts);

    turns.push_back({"user", question});
    if (!task.text.isEmpty()) {
        const QString material = fencedText(text, fence, text == task.text);
        QString& first = turns.front().text;
        first = first.isEmpty() ? material : material + QStringLiteral("\n\n") + first;
    }
    turns.insert(turns.begin(), system);
    Prompt prompt = written(turns);
    prompt.fence = fence;
    prompt.cut = cuts.join(QStringLiteral(", "));
    return prompt;
}

} // namespace quillmate::localservice
