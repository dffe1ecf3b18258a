#pragma once

#include "state/Synchronized.h"

#include <optional>
#include <string>
#include <utility>

namespace quillmate
{

/// The message being replied to. All optional: absent is not empty.
struct ReplyEmail {
    /// The sender's address.
    std::optional<std::string> email;
    std::optional<std::string> subject;
    /// The arrival date, as the header has it.
    std::optional<std::string> date;
    /// The raw source after its first blank line, trimmed.
    std::optional<std::string> content;
    /// As the header has it, angle brackets included.
    std::optional<std::string> messageId;

    bool operator==(const ReplyEmail&) const = default;
};

/// The shared record of the message being replied to, filled each time a compose session begins. Any thread. It is
/// guarded as a whole, so that nobody sees the text of one message with the id of another.
class ReplyEmailManager
{
public:
    static ReplyEmailManager& shared()
    {
        static ReplyEmailManager manager;
        return manager;
    }

    [[nodiscard]] ReplyEmail record() const { return m_record.get(); }
    [[nodiscard]] std::optional<std::string> messageId()
    {
        return m_record.with([](const ReplyEmail& record) { return record.messageId; });
    }
    /// Whether there is a message being replied to, as far as the panel's layout goes.
    [[nodiscard]] bool hasSubject()
    {
        return m_record.with([](const ReplyEmail& record) { return record.subject.has_value(); });
    }
    /// Changes any of the fields in one step.
    template<typename Change>
    void update(Change change)
    {
        m_record.with(std::move(change));
    }

private:
    ReplyEmailManager() = default;

    Synchronized<ReplyEmail> m_record;
};

} // namespace quillmate
