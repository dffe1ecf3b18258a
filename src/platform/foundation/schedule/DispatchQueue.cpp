#include "platform/foundation/schedule/DispatchQueue.h"

namespace quillmate
{

DispatchQueue& DispatchQueue::main()
{
    static DispatchQueue queue(MainSchedule::shared());
    return queue;
}

} // namespace quillmate
