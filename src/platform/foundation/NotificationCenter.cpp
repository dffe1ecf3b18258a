#include "platform/foundation/NotificationCenter.h"

#include <algorithm>

namespace quillmate
{

NotificationCenter& NotificationCenter::defaultCenter()
{
    static NotificationCenter center;
    return center;
}

void NotificationCenter::add(std::weak_ptr<void> observer, std::string name, std::function<void(void*)> tell,
                             void* address)
{
    auto registration = std::make_shared<Registration>();
    registration->observer = std::move(observer);
    registration->address = address;
    registration->name = std::move(name);
    registration->tell = std::move(tell);
    const std::lock_guard lock(m_mutex);
    m_registrations.push_back(std::move(registration));
}

void NotificationCenter::removeObserver(const void* observer)
{
    const std::lock_guard lock(m_mutex);
    std::erase_if(m_registrations, [observer](const auto& registration) {
        const bool leaves = registration->address == observer || registration->observer.expired();
        registration->left = registration->left || leaves;
        return leaves;
    });
}

void NotificationCenter::post(const std::string& name)
{
    std::vector<std::shared_ptr<Registration>> told;
    {
        const std::lock_guard lock(m_mutex);
        std::copy_if(m_registrations.begin(), m_registrations.end(), std::back_inserter(told),
                     [&name](const auto& registration) { return registration->name == name; });
    }
    for (const auto& registration : told) {
        const auto observer = registration->observer.lock();
        {
            const std::lock_guard lock(m_mutex);
            if (!observer || registration->left) {
                continue;
            }
        }
        registration->tell(registration->address);
    }
}

} // namespace quillmate
