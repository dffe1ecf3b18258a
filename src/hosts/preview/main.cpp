#include "extension/MailExtension.h"
#include "hosts/preview/DisplayChoice.h"
#include "hosts/preview/PreviewProgram.h"
#include "platform/appkit/DisplayWatch.h"
#include "platform/appkit/ViewEngine.h"

#include <QGuiApplication>
#include <QIcon>
#include <cstdio>
#include <optional>
#include <utility>

namespace
{

using namespace quillmate;

constexpr int misused = 2;

int complain(const std::string& sentence)
{
    std::fprintf(stderr, "quillmate: %s\n", sentence.c_str());
    return misused;
}

} // namespace

int main(int argc, char** argv)
{
    const std::vector<std::string_view> arguments(argv + 1, argv + argc);
    const auto options = PreviewOptions::parse(arguments);
    if (!options) {
        return complain(options.error());
    }
    if (options.value().task == PreviewOptions::Task::Help) {
        std::fputs(previewHelp().data(), stdout);
        return 0;
    }
    if (options.value().task == PreviewOptions::Task::Version) {
        std::puts("quillmate " QUILLMATE_VERSION);
        return 0;
    }
    if (const std::string problem = chooseDisplay(options.value().screenshotFile.has_value()); !problem.empty()) {
        return complain(problem);
    }

    ViewEngine::chooseRendering();
    std::optional<DisplayWatch> watch(
        std::in_place, "quillmate",
        "check DISPLAY or WAYLAND_DISPLAY, or use --screenshot FILE, which needs no display.");
    int noArguments = 1; // Ours are read; Qt's own are given in its environment variables.
    const QGuiApplication application(noArguments, argv);
    watch.reset();
    // Not before: reading certificates wants an application object.
    const auto environment = NetworkEnvironment::fromProcessEnvironment();
    if (!environment) {
        return complain(environment.error());
    }
    QGuiApplication::setApplicationName(QStringLiteral("quillmate"));
    QGuiApplication::setApplicationVersion(QStringLiteral(QUILLMATE_VERSION));
    QGuiApplication::setApplicationDisplayName(QStringLiteral("Quillmate"));
    QGuiApplication::setWindowIcon(QIcon(QStringLiteral(":/quillmate/quillmateLogo.svg")));

    MailExtension extension;
    PreviewProgram program(options.value(), environment.value(), extension);
    program.start();
    return QGuiApplication::exec();
}
