#include "base/Descriptors.h"
#include "extension/MailExtension.h"
#include "hosts/preview/PreviewProgram.h"
#include "hosts/startup/CommandLine.h"
#include "hosts/startup/DesktopProgram.h"

namespace
{

using namespace quillmate;

constexpr DesktopProgram::Texts texts{
    "quillmate",
    "there is no display (DISPLAY and WAYLAND_DISPLAY are not set): start quillmate within a desktop session, or use "
    "--screenshot FILE, which needs no display.",
    "check DISPLAY or WAYLAND_DISPLAY, or use --screenshot FILE, which needs no display."};

} // namespace

int main(int argc, char** argv)
{
    openMissingStandardDescriptors();
    CommandLine line(previewOptions());
    if (const auto status = line.readProcess(argc, argv, texts.name, previewHelp())) {
        return *status;
    }
    const auto options = PreviewOptions::from(line);
    if (!options) {
        return complain(texts.name, options.error());
    }
    if (options.value().screenshotFile) {
        DesktopProgram::drawToMemory();
    }
    const auto desktop = DesktopProgram::open(texts, argv);
    if (!desktop) {
        return complain(texts.name, desktop.error());
    }
    QGuiApplication::setApplicationDisplayName(QStringLiteral("Quillmate"));
    MailExtension extension;
    const ServiceChoice choice = options.value().service.value_or(desktop.value()->service().choice);
    ServiceAccess service(choice, desktop.value()->environment());
    PreviewProgram program(options.value(), service, extension);
    program.start();
    return QGuiApplication::exec();
}
