#include "state/IncommingUpdatesManager.h"

#include "state/MainThreadObject.h"

namespace quillmate
{

IncommingUpdatesManager::IncommingUpdatesManager()
{
    belongToMainThread(*this);
}

IncommingUpdatesManager& IncommingUpdatesManager::shared()
{
    static IncommingUpdatesManager manager;
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
