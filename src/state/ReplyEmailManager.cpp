#include "state/ReplyEmailManager.h"

namespace quillmate
{

ReplyEmailManager& ReplyEmailManager::shared()
{
    static ReplyEmailManager manager;
    return manager;
}

} // namespace quillmate
