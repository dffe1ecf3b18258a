#pragma once

#include "features/RepliedMessage.h"

namespace quillmate
{

/// The least height of the panel and of the sign-in screen, in points: more when there is a message to summarise.
inline int panelHeight(const RepliedMessage& message)
{
    return message.hasSubject() ? 550 : 400;
}

} // namespace quillmate
