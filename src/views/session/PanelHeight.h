#pragma once

#include "state/ReplyEmailManager.h"

namespace quillmate
{

/// The least height of the panel and of the sign-in screen, in points: more when there is a message to summarise.
inline int panelHeight()
{
    return ReplyEmailManager::shared().hasSubject() ? 550 : 400;
}

} // namespace quillmate
