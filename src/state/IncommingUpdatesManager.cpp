#include "state/IncommingUpdatesManager.h"

#include "state/MainThreadObject.h"

namespace quillmate
{

IncommingUpdatesManager& IncommingUpdatesManager::shared()
{
    // One step for both: only the thread that has made an object can hand it to another.
    static IncommingUpdatesManager& manager = []() -> IncommingUpdatesManager& {
        static IncommingUpdatesManager made;
        belongToMainThread(made);
        return made;
    }();
    return manager;
}

void IncommingUpdatesManager::setIncommingUpdatesAvailable(bool available)
{
    if (m_available.get() == available) {
        return;
    }
    m_available.set(available);
    Q_EMIT incommingUpdatesAvailableChanged();
}

} // namespace quillmate
