#include "server/model/Prompt.h"

#include "mail/QuotedText.h"
#include "server/model/ModelJson.h"
#include "server/model/PromptText.h"
#include "server/model/TokenEstimate.h"
#include "server/signin/Secrets.h"

#include <QStringList>

#include <algorithm>
#include <utility>

namespace quillmate::server
{

namespace
{

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

/// The text without its quoted history, where that is too long, then without its signature, then without its end.
QString fitted(const QString& text, qsizetype room, QStringList& cuts)
{
    QString rest = text;
    qsizetype size = mostTokens(rest);
    const auto shorten = [&](const QString& shorter, const char* what) {
        const qsizetype left = mostTokens(shorter);
        if (!shorter.isEmpty() && left < size) {
            cuts += QStringLiteral("%1 (%2)").arg(QString::fromUtf8(what), tokens(size - left));
            rest = shorter;
            size = left;
        }
    };
    if (size > room) {
        shorten(ownLinesAndSignature(text).join(u'\n'), "its quoted history");
    }
    if (size > room) {
        shorten(ownText(text), rest == text ? "its quoted history" : "its signature");
    }
    if (size > room) {
        shorten(withinTokens(rest, room), "its end");
    }
    return rest;
}

/// The task without control tokens in what others wrote.
PromptTask disarmed(PromptTask task)
{
    for (QString* text : {&task.text, &task.userName, &task.question}) {
        *text = withoutTemplateTokens(*text);
    }
    for (ThreadMessage& turn : task.earlier) {
        turn.text = withoutTemplateTokens(QString::fromStdString(turn.text)).toStdString();
    }
    return task;
}

Prompt written(const std::vector<Turn>& turns)
{
    Prompt prompt;
    JSONArray messages;
    for (const Turn& turn : turns) {
        messages.emplace_back(JSONObject{{"role", turn.role}, {"content", turn.text.toStdString()}});
        prompt.most += mostOf(turn);
        prompt.least += leastTokens(turn.text);
    }
    prompt.messages = bytesOf(std::move(messages));
    return prompt;
}

} // namespace

std::optional<Prompt> makePrompt(const PromptTask& given, qsizetype contextTokens)
{
    const PromptTask task = disarmed(given);
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

    // In the last turn: a server that drops the oldest of them must not drop the message.
    QStringList last;
    if (!task.text.isEmpty()) {
        last += fencedText(text, fence, text == task.text);
    }
    if (!question.isEmpty()) {
        last += question;
    }
    turns.push_back({"user", last.join(QStringLiteral("\n\n"))});
    turns.insert(turns.begin(), system);
    Prompt prompt = written(turns);
    prompt.fence = fence;
    prompt.cut = cuts.join(QStringLiteral(", "));
    return prompt;
}

} // namespace quillmate::server
