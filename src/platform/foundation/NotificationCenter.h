#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace quillmate
{

/// Named announcements within the process. Observers are held weakly and told on the posting thread, in the order in
/// which they joined; one that leaves while a notification is being told is not told any more, one that joins hears the
/// next.
class NotificationCenter
{
public:
    static NotificationCenter& defaultCenter();

    /// Any thread. Runs `selector` on the observer for each notification of that name, as long as the observer lives.
    template<typename Observer, typename Selector>
    void addObserver(const std::shared_ptr<Observer>& observer, Selector selector, const std::string& name)
    {
        add(
            observer, name, [selector](void* target) { (static_cast<Observer*>(target)->*selector)(); },
            observer.get());
    }
    /// Any thread. Forgets every registration of the observer; the address suffices, so a destructor may call it.
    void removeObserver(const void* observer);
    /// Any thread. Tells every observer of the name before it returns.
    void post(const std::string& name);

private:
    struct Registration {
        std::weak_ptr<void> observer;
        void* address = nullptr;
        std::string name;
        std::function<void(void*)> tell;
        bool left = false; // Guarded by the centre's lock.
    };

    void add(std::weak_ptr<void> observer, std::string name, std::function<void(void*)> tell, void* address);

    std::mutex m_mutex;
    std::vector<std::shared_ptr<Registration>> m_registrations;
};

} // namespace quillmate
