#pragma once

#include <QCoreApplication>
#include <QObject>

namespace quillmate
{

/// A shared object is made by whichever thread asks first; what it announces belongs to the main thread. To be called
/// in its constructor: only the thread that makes an object can hand it to another, and nobody else has it yet.
inline void belongToMainThread(QObject& object)
{
    if (const auto* application = QCoreApplication::instance()) {
        object.moveToThread(application->thread());
    }
}

} // namespace quillmate
