#include "extension/MailExtension.h"
#include "hosts/link/Frame.h"
#include "hosts/link/LinkPanels.h"
#include "hosts/link/LinkThread.h"
#include "hosts/link/NativeHostManifest.h"
#include "platform/appkit/DisplayWatch.h"
#include "platform/appkit/ViewEngine.h"
#include "platform/foundation/NetworkEnvironment.h"
#include "platform/foundation/TerminationSignals.h"
#include "platform/foundation/URLSession.h"

#include <QGuiApplication>
#include <QIcon>

#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <optional>
#include <string_view>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace
{

constexpr int usageStatus = 2;

constexpr auto help =
    "Usage: quillmate-extension [HOST-ARGUMENTS…]\n"
    "       quillmate-extension --install-host | --remove-host\n"
    "\n"
    "Quillmate's side of the host link. A mail application starts it and sends frames to its standard\n"
    "input: a 32-bit length in native byte order, then that many bytes of JSON. Answers leave by\n"
    "standard output, diagnostics by standard error.\n"
    "\n"
    "  --install-host  tells Thunderbird, for this user, that its add-on starts this program\n"
    "  --remove-host   takes that back\n"
    "  --help          shows this text and ends\n"
    "  --version       shows the version and ends\n"
    "\n"
    "QUILLMATE_CONNECT_TO=HOST=ADDRESS:PORT[,…] connects to the address in the host's place;\n"
    "QUILLMATE_CA_FILE=FILE names a PEM file with further roots to trust.\n";

int failUsage(std::string_view sentence)
{
    std::fprintf(stderr, "quillmate-extension: %.*s\n", static_cast<int>(sentence.size()), sentence.data());
    return usageStatus;
}

/// Performs --install-host or --remove-host, which stand alone.
int changeNativeHost(int argc, std::string_view option)
{
    if (argc != 2) {
        return failUsage(std::string(option) + " takes no further argument");
    }
    std::error_code error;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error) {
        std::fprintf(stderr, "quillmate-extension: cannot tell where this program is: %s\n", error.message().c_str());
        return 1;
    }
    const auto outcome = option == "--install-host"
                             ? quillmate::installNativeHost(quillmate::nativeHostFolder(), program)
                             : quillmate::removeNativeHost(quillmate::nativeHostFolder());
    std::fprintf(outcome ? stdout : stderr, "quillmate-extension: %s\n",
                 (outcome ? outcome.value() : outcome.error()).c_str());
    return outcome ? 0 : 1;
}

/// Keeps standard output for frames alone: the descriptor returned is the only one that leads there, and whatever
/// prints goes to standard error.
int takeStandardOutput()
{
    const int frames = ::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3);
    ::dup2(STDERR_FILENO, STDOUT_FILENO);
    return frames;
}

} // namespace

int main(int argc, char** argv)
{
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        if (argument == "--help") {
            std::fputs(help, stdout);
            return 0;
        }
        if (argument == "--version") {
            std::puts("quillmate-extension " QUILLMATE_VERSION);
            return 0;
        }
        if (argument == "--install-host" || argument == "--remove-host") {
            return changeNativeHost(argc, argument);
        }
        // A mail application adds words of its own, a file and a name; none of them looks like an option.
        if (argument.starts_with('-')) {
            return failUsage("the option " + std::string(argument) + " is unknown; --help lists what there is");
        }
    }
    if (!quillmate::DisplayWatch::isDisplayNamed()) {
        return failUsage("there is no display to show panels on; set DISPLAY or WAYLAND_DISPLAY");
    }
    quillmate::FrameWriter output(takeStandardOutput());
    // A message of many megabytes passes three times as fast through a pipe of the largest ordinary size.
    ::fcntl(STDIN_FILENO, F_SETPIPE_SZ, 1024 * 1024);

    quillmate::ViewEngine::chooseRendering();
    std::optional<quillmate::DisplayWatch> watch(std::in_place, "quillmate-extension",
                                                 "check DISPLAY or WAYLAND_DISPLAY.");
    QGuiApplication application(argc, argv);
    watch.reset();
    // Not before: reading certificates wants an application object.
    auto environment = quillmate::NetworkEnvironment::fromProcessEnvironment();
    if (!environment) {
        return failUsage(environment.error());
    }
    quillmate::URLSession::configure(std::move(environment).value());
    QGuiApplication::setApplicationName(QStringLiteral("quillmate-extension"));
    QGuiApplication::setApplicationVersion(QStringLiteral(QUILLMATE_VERSION));
    QGuiApplication::setWindowIcon(QIcon(QStringLiteral(":/quillmate/quillmateLogo.svg")));
    // A panel also closes with its compose window, and then the link goes on.
    QGuiApplication::setQuitOnLastWindowClosed(false);
    const quillmate::TerminationSignals signals;

    quillmate::MailExtension extension;
    int status = 0;
    {
        quillmate::LinkPanels panels;
        // A mail application ends the process itself, and may ask for a closed panel again.
        if (argc == 1) {
            QObject::connect(&panels, &quillmate::LinkPanels::lastClosedByUser, &application, &QGuiApplication::quit);
        }
        const quillmate::LinkThread link(STDIN_FILENO, output, extension, panels, [&status](const std::string& reason) {
            if (!reason.empty()) {
                std::fprintf(stderr, "quillmate-extension: %s\n", reason.c_str());
                status = 1;
            }
            QGuiApplication::quit();
        });
        const int looped = QGuiApplication::exec();
        status = looped != 0 ? looped : status;
    }
    return status;
}
