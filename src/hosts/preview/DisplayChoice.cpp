#include "hosts/preview/DisplayChoice.h"

#include <QByteArray>
#include <QtGlobal>

namespace quillmate
{
namespace
{

bool isSet(const char* variable)
{
    return !qEnvironmentVariableIsEmpty(variable);
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

} // namespace quillmate
