#include "platform/appkit/DisplayWatch.h"

#include <QByteArray>
#include <QtGlobal>

#include <cstdio>
#include <unistd.h>
#include <utility>

namespace quillmate
{
namespace
{

constexpr int misused = 2;

// Qt's handlers are plain functions, so what they need stands here.
struct Watched {
    QtMessageHandler otherHandler = nullptr;
    std::string program;
    std::string advice;
};

Watched& watched()
{
    static Watched state;
    return state;
}

void tellAndEnd(QtMsgType type, const QMessageLogContext& context, const QString& text)
{
    const Watched& state = watched();
    if (type == QtFatalMsg) {
        const QByteArray platform = qgetenv("QT_QPA_PLATFORM");
        if (platform.isEmpty()) {
            std::fprintf(stderr, "%s: the display cannot be opened: %s\n", state.program.c_str(), state.advice.c_str());
        } else {
            std::fprintf(stderr,
                         "%s: no window can be opened with QT_QPA_PLATFORM=\"%s\": unset QT_QPA_PLATFORM, or name a "
                         "platform in it that is there.\n",
                         state.program.c_str(), platform.constData());
        }
        ::_exit(misused);
    }
    // What leads up to it would only repeat it; details are there only when asked for.
    if (type == QtDebugMsg && state.otherHandler != nullptr) {
        state.otherHandler(type, context, text);
    }
}

} // namespace

DisplayWatch::DisplayWatch(std::string program, std::string advice)
{
    watched() = {qInstallMessageHandler(tellAndEnd), std::move(program), std::move(advice)};
}

DisplayWatch::~DisplayWatch()
{
    qInstallMessageHandler(watched().otherHandler);
}

bool DisplayWatch::isDisplayNamed()
{
    return !qEnvironmentVariableIsEmpty("DISPLAY") || !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") ||
           !qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM");
}

} // namespace quillmate
