#include "hosts/preview/DisplayChoice.h"

#include <QByteArray>
#include <QString>
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
        const QByteArray platform = qgetenv("QT_QPA_PLATFORM");
        if (platform.isEmpty()) {
            std::fputs("quillmate: the display cannot be opened: check DISPLAY or WAYLAND_DISPLAY, or use "
                       "--screenshot FILE, which needs no display.\n",
                       stderr);
        } else {
            std::fprintf(stderr,
                         "quillmate: no window can be opened with QT_QPA_PLATFORM=\"%s\": unset QT_QPA_PLATFORM, or "
                         "name a platform in it that is there.\n",
                         platform.constData());
        }
        ::_exit(misused);
    }
    // What leads up to it would only repeat it; details are there only when asked for.
    if (type == QtDebugMsg && otherHandler != nullptr) {
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
               "session, or use --screenshot FILE, which needs no display.";
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
