#pragma once

#include "platform/foundation/settings/SettingsDatabase.h"
#include "state/ReplyEmailManager.h"
#include "state/SignInPeriod.h"

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

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
    explicit RepliedMessage(ReplyEmail record)
        : RepliedMessage(std::move(record), false)
    {
    }
    /// No message, in a program that has none but this one: it reads what the keys without an id hold.
    static std::shared_ptr<const RepliedMessage> none()
    {
        return std::shared_ptr<const RepliedMessage>(new RepliedMessage({}, true));
    }

    [[nodiscard]] const std::optional<std::string>& messageId() const { return m_record.messageId; }
    /// The message's own text. Absent when it is not known.
    [[nodiscard]] const std::optional<SharedText>& content() const { return m_record.content; }
    /// An absent text and an empty one give nothing to summarise and nothing to answer.
    [[nodiscard]] bool hasContent() const { return content() && !content()->empty(); }
    /// Whether there is a message at all, as far as the panel's layout goes.
    [[nodiscard]] bool hasSubject() const { return m_record.subject.has_value(); }

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
    RepliedMessage(ReplyEmail record, bool isAlone)
        : m_record(std::move(record))
        , m_hasKeysAlone(isAlone || m_record.messageId)
    {
    }

    /// What this message has stored under a key that is not its alone.
    [[nodiscard]] std::optional<SettingsValue> own(const std::string& key) const;

    const ReplyEmail m_record;
    const bool m_hasKeysAlone;
    // What it has stored otherwise, up to the next sign-out.
    mutable std::mutex m_mutex;
    mutable std::map<std::string, SettingsValue> m_own;
    mutable SignInPeriod m_ownPeriod;
    mutable std::string m_draft;
    mutable SignInPeriod m_draftPeriod;
};

} // namespace quillmate
