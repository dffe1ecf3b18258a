#pragma once

#include <QCoreApplication>
#include <QObject>

namespace quillmate
{

/// A shared object is made by whichever thread asks first; what it announces belongs to the main thread. To be called
/// on the thread that made it.
inline void belongToMainThread(QObject& object)
{
    if (const auto* application = QCoreApplication::instance()) {
        object.moveToThread(application->thread());
    }
}

} // namespace quillmate
