#pragma once

#include "features/RepliedMessage.h"

#include <memory>

namespace quillmate
{

/// The message of a session that began with what the shared record holds now.
inline std::shared_ptr<const RepliedMessage> currentMessage()
{
    return std::make_shared<const RepliedMessage>(ReplyEmailManager::shared().record());
}

} // namespace quillmate
