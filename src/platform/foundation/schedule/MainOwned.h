#pragma once

#include "platform/foundation/schedule/DispatchQueue.h"

#include <QCoreApplication>
#include <QThread>

#include <memory>
#include <utility>

namespace quillmate
{

/// An object of the main thread that other threads may hold for a while: whoever lets go last, it is destroyed on the
/// main thread. Once the application object is gone the last holder destroys it.
template<typename T, typename... Arguments>
std::shared_ptr<T> makeMainOwned(Arguments&&... arguments)
{
    return std::shared_ptr<T>(new T(std::forward<Arguments>(arguments)...), [](T* object) {
        const auto* application = QCoreApplication::instance();
        if (!application || QThread::currentThread() == application->thread()) {
            delete object;
            return;
        }
        // Owned by the work itself, so that work dropped unrun at exit frees it as well.
        DispatchQueue::main().async([owner = std::shared_ptr<T>(object)]() mutable { owner.reset(); });
    });
}

} // namespace quillmate
