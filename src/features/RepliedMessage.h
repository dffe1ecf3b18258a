#pragma once

#include "platform/foundation/settings/SettingsDatabase.h"
#include "state/ReplyEmailManager.h"
#include "state/SignInPeriod.h"

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace quillmate
{

/// The message that one compose session replies to, and what is kept for it. Everything in the session's panel speaks
/// of this message, whatever begins meanwhile. Any thread.
///
/// What is kept stands in the settings store under the message's keys. The keys of messages without an id are the same
/// for all of them; such a message reads only what it has stored itself.
class RepliedMessage
{
public:
    explicit RepliedMessage(ReplyEmail record, bool contentFollows = false)
        : RepliedMessage(std::move(record), contentFollows, false)
    {
    }
    /// No message, in a program that has none but this one: it reads what the keys without an id hold.
    static std::shared_ptr<const RepliedMessage> none()
    {
        return std::shared_ptr<const RepliedMessage>(new RepliedMessage({}, false, true));
    }

    [[nodiscard]] const std::optional<std::string>& messageId() const { return m_messageId; }
    /// The message's own text. Absent when it is not known.
    [[nodiscard]] std::optional<SharedText> content() const;
    /// An absent text and an empty one give nothing to summarise and nothing to answer.
    [[nodiscard]] bool hasContent() const;
    /// The text is on its way: `whenContentArrives` tells when it is there, or known not to come.
    [[nodiscard]] bool contentFollows() const;
    /// Whether there is a message at all, as far as the panel's layout goes.
    [[nodiscard]] bool hasSubject() const { return m_hasSubject; }

    /// What is known of the text by now; an absent one takes nothing away.
    void receiveContent(std::optional<SharedText> content, bool follows) const;
    /// Runs `told` once, in a turn of the main thread, when more is known of the text.
    void whenContentArrives(std::function<void()> told) const;
    /// Whether it can give its place to `other`, of which more is known, without taking anything from the person.
    [[nodiscard]] bool canGiveWayTo(const RepliedMessage& other) const;

    /// What is kept of the text: what the person pasted, else what was sent last.
    [[nodiscard]] std::optional<std::string> fallbackContent() const;
    void storeFallbackContent(const SharedText& text, const SignInPeriod& period) const;
    /// Keeps the message's own text unless something is kept; a long one a little later, by another thread.
    static void keepOwnContent(const std::shared_ptr<const RepliedMessage>& message, const SignInPeriod& period);

    /// The question that is being typed, up to the next sign-out; it outlives the screen that it is typed in.
    [[nodiscard]] std::string draft() const;
    void setDraft(std::string text, const SignInPeriod& period) const;

    // As the settings store's, for keys of this message. Nothing is written once the period of the panel is over.
    [[nodiscard]] std::optional<std::string> string(const std::string& key) const;
    [[nodiscard]] bool boolean(const std::string& key) const;
    [[nodiscard]] std::optional<std::string> data(const std::string& key) const;
    void setString(const std::string& key, std::string text, const SignInPeriod& period) const;
    void setBoolean(const std::string& key, bool value, const SignInPeriod& period) const;

    /// Whether nobody else speaks of a message under the same keys.
    [[nodiscard]] bool hasKeysAlone() const { return m_hasKeysAlone; }
    /// Keeps what this message has stored under a key that is not its alone; else does nothing.
    void keepOwn(const std::string& key, SettingsValue value, const SignInPeriod& period) const;

private:
    RepliedMessage(ReplyEmail record, bool contentFollows, bool isAlone)
        : m_messageId(std::move(record.messageId))
        , m_hasSubject(record.subject)
        , m_hasKeysAlone(isAlone || m_messageId)
        , m_content(std::move(record.content))
        , m_contentFollows(contentFollows)
    {
    }

    /// What this message has stored under a key that is not its alone.
    [[nodiscard]] std::optional<SettingsValue> own(const std::string& key) const;

    const std::optional<std::string> m_messageId;
    const bool m_hasSubject;
    const bool m_hasKeysAlone;
    mutable std::mutex m_mutex;
    mutable std::optional<SharedText> m_content;
    mutable bool m_contentFollows;
    mutable std::vector<std::function<void()>> m_waiting; // For more to be known of the text.
    // What it has stored under keys that are not its alone, up to the next sign-out.
    mutable std::map<std::string, SettingsValue> m_own;
    mutable SignInPeriod m_ownPeriod;
    mutable std::string m_draft;
    mutable SignInPeriod m_draftPeriod;
};

} // namespace quillmate
