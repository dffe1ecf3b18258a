#pragma once

#include <string>

namespace quillmate
{

/// Why a message could not be read.
struct MailFailure {
    enum class Kind {
        Missing,    ///< nothing is there under that name
        Unreadable, ///< the system refused or the reading broke off
        TooLarge,   ///< one message above the size limit
        Empty,      ///< there, but without a single byte
        NotMail,    ///< readable, but no mail message
    };

    Kind kind = Kind::Unreadable;
    /// One sentence for the user, UTF-8: what was named, what is wrong with it, what to do.
    std::string text;

    bool operator==(const MailFailure&) const = default;
};

} // namespace quillmate
