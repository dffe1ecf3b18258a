#include "state/IncommingUpdatesManager.h"

#include "state/MainThreadObject.h"

namespace quillmate
{

IncommingUpdatesManager& IncommingUpdatesManager::shared()
{
    static IncommingUpdatesManager manager;
    static const bool moved = belongToMainThread(manager);
    Q_UNUSED(moved)
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
