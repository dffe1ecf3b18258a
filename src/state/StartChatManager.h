#pragma once

#include "state/Synchronized.h"

#include <optional>
#include <string>

namespace quillmate
{

/// The assistant conversation opened for the chat. Any thread.
class StartChatManager
{
public:
    static StartChatManager& shared()
    {
        static StartChatManager manager;
        return manager;
    }

    Synchronized<std::optional<std::string>> assistantId;
    Synchronized<std::optional<std::string>> threadId;

private:
    StartChatManager() = default;
};

} // namespace quillmate
