#pragma once

class QQmlEngine;

namespace quillmate
{

/// The engine behind every view of the process, and the choices about drawing that hold for all of them.
class ViewEngine
{
public:
    /// To be called before the application object is made: draws with Qt Quick's software scene graph, which starts
    /// twice as fast as a software OpenGL and has no driver to go wrong, in the plain style that our views dress
    /// themselves.
    static void chooseRendering();

    /// Made on first use; goes with the application object. Main thread.
    static QQmlEngine& shared();
};

} // namespace quillmate
