#pragma once

#include "platform/appkit/ViewEngine.h"

#include <QAccessible>
#include <QGuiApplication>

namespace quillmate
{

/// What has to be so before the application object is there.
struct ViewTestSurroundings {
    ViewTestSurroundings()
    {
        ViewEngine::chooseRendering();
        // Whatever the desktop's are.
        qputenv("QUILLMATE_APPEARANCE", "light");
        qputenv("QUILLMATE_TEXT_SCALE", "1");
    }
};

/// The application of a test of views: drawn as the programs draw them, with somebody listening to what they tell a
/// screen reader.
class ViewTestApplication : private ViewTestSurroundings, public QGuiApplication
{
public:
    ViewTestApplication(int& argc, char** argv)
        : QGuiApplication(argc, argv)
    {
        QAccessible::setActive(true);
    }
};

} // namespace quillmate
