#include "state/SummarizeManager.h"

namespace quillmate
{

SummarizeManager& SummarizeManager::shared()
{
    static SummarizeManager manager;
    return manager;
}

} // namespace quillmate
