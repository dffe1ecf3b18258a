#pragma once

#include "base/SharedText.h"
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
    std::optional<SharedText> content;
    /// As the header has it, angle brackets included.
    std::optional<std::string> messageId;

    bool operator==(const ReplyEmail&) const = default;
};

/// The shared record of the message being replied to, filled each time a compose session begins; a panel keeps to its
/// own session's record. Any thread, guarded as a whole.
class ReplyEmailManager
{
public:
    static ReplyEmailManager& shared()
    {
        static ReplyEmailManager manager;
        return manager;
    }

    [[nodiscard]] ReplyEmail record() const { return m_record.get(); }
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
