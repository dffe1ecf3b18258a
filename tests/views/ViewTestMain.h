#pragma once

#include "platform/appkit/ViewEngine.h"

#include <QAccessible>
#include <QGuiApplication>
#include <QTest>

namespace quillmate
{

/// Runs a test of views: drawn as the programs draw them, with somebody listening to what they tell a screen reader.
template<typename Test>
int runViewTest(int argc, char** argv)
{
    ViewEngine::chooseRendering();
    // Whatever the desktop's are.
    qputenv("QUILLMATE_APPEARANCE", "light");
    qputenv("QUILLMATE_TEXT_SCALE", "1");
    QGuiApplication application(argc, argv);
    QAccessible::setActive(true);
    Test test;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&test, argc, argv);
}

} // namespace quillmate
