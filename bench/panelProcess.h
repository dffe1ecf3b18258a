#pragma once

#include "platform/appkit/ViewEngine.h"
#include "platform/foundation/text/print.h"

#include <QByteArray>

#include <unistd.h>

namespace quillmate
{

/// Makes the process one that shows panels as a host does, with its files in a folder of their own and its diagnostics
/// apart from the figures. Before the application object.
inline void beginPanelProcess(const QByteArray& folder)
{
    qputenv("XDG_DATA_HOME", folder);
    qputenv("XDG_CACHE_HOME", folder);
    setPrintDescriptor(STDERR_FILENO);
    ViewEngine::chooseRendering();
}

} // namespace quillmate
