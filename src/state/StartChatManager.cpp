#include "state/StartChatManager.h"

namespace quillmate
{

StartChatManager& StartChatManager::shared()
{
    static StartChatManager manager;
    return manager;
}

} // namespace quillmate
