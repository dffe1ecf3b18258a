#include "platform/foundation/DispatchQueue.h"

namespace quillmate
{

DispatchQueue& DispatchQueue::main()
{
    static DispatchQueue queue(MainSchedule::shared());
    return queue;
}

} // namespace quillmate
