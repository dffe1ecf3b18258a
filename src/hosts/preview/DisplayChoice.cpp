#include "hosts/preview/DisplayChoice.h"

#include <QByteArray>
#include <QtGlobal>
#include <cstdio>
#include <unistd.h>

namespace quillmate
{
namespace
{

constexpr int misused = 2;
QtMessageHandler otherHandler = nullptr;

bool isSet(const char* variable)
{
    return !qEnvironmentVariableIsEmpty(variable);
}

void tellAndEnd(QtMsgType type, const QMessageLogContext& context, const QString& text)
{
    if (type == QtFatalMsg) {
        std::fputs(
            "quillmate: the display cannot be opened: check DISPLAY or WAYLAND_DISPLAY, or use --screenshot FILE, "
            "which needs no display.\n",
            stderr);
        ::_exit(misused);
    }
    // The warnings that lead up to it would only repeat it.
    if (type != QtWarningMsg && otherHandler != nullptr) {
        otherHandler(type, context, text);
    }
}

} // namespace

std::string chooseDisplay(bool pictureOnly)
{
    if (isSet("QT_QPA_PLATFORM")) {
        return {};
    }
    if (pictureOnly) {
        qputenv("QT_QPA_PLATFORM", QByteArrayLiteral("offscreen"));
        return {};
    }
    if (!isSet("DISPLAY") && !isSet("WAYLAND_DISPLAY")) {
        return "there is no display (DISPLAY and WAYLAND_DISPLAY are not set): start quillmate within a desktop "
               "session, or "
               "use --screenshot FILE, which needs no display.";
    }
    return {};
}

void watchDisplayConnection()
{
    otherHandler = qInstallMessageHandler(tellAndEnd);
}

void endDisplayWatch()
{
    qInstallMessageHandler(otherHandler);
}

} // namespace quillmate
