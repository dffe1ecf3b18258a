#include "state/ServiceReachability.h"

#include "platform/foundation/schedule/DispatchQueue.h"
#include "state/MainThreadObject.h"

#include <utility>

namespace quillmate
{

ServiceReachability& ServiceReachability::shared()
{
    static ServiceReachability reachability;
    return reachability;
}

ServiceReachability::ServiceReachability()
{
    belongToMainThread(*this);
}

std::optional<std::string> ServiceReachability::problem() const
{
    const std::lock_guard lock(m_mutex);
    return m_problem;
}

void ServiceReachability::tell(std::optional<std::string> problem)
{
    {
        const std::lock_guard lock(m_mutex);
        if (m_problem == problem) {
            return;
        }
        m_problem = std::move(problem);
    }
    DispatchQueue::main().async([] { Q_EMIT shared().changed(); });
}

} // namespace quillmate
