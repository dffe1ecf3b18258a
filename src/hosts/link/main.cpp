#include "base/Descriptors.h"
#include "extension/MailExtension.h"
#include "hosts/link/Frame.h"
#include "hosts/link/LinkAnswers.h"
#include "hosts/link/LinkPanels.h"
#include "hosts/link/LinkThread.h"
#include "hosts/link/NativeHostManifest.h"
#include "hosts/startup/CommandLine.h"
#include "hosts/startup/DesktopProgram.h"
#include "hosts/startup/ServiceAccess.h"
#include "platform/foundation/text/PrintQueue.h"
#include "platform/foundation/text/print.h"
#include "state/ServiceReachability.h"

#include <array>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <system_error>
#include <unistd.h>

namespace
{

using namespace quillmate;

constexpr DesktopProgram::Texts texts{"quillmate-extension",
                                      "there is no display to show panels on; set DISPLAY or WAYLAND_DISPLAY",
                                      "check DISPLAY or WAYLAND_DISPLAY."};

constexpr auto installHost = "install-host";
constexpr auto removeHost = "remove-host";
constexpr std::array<CommandLine::Option, 2> options{{{installHost}, {removeHost}}};

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
    "QUILLMATE_SERVICE=local starts an assistant service on this machine when it is first needed, remote\n"
    "asks the host of the build; without it that of this machine is asked where the build has no host of\n"
    "its own. QUILLMATE_CONNECT_TO=HOST=ADDRESS:PORT[,…] connects to the address in the host's place;\n"
    "QUILLMATE_CA_FILE=FILE names a PEM file with further roots to trust.\n";

/// Performs --install-host or --remove-host, which stand alone.
int changeNativeHost(const CommandLine& line, int argc)
{
    const bool install = line.isSet(installHost);
    if (argc != 2) {
        return complain(texts.name,
                        std::string("--") + (install ? installHost : removeHost) + " takes no further argument");
    }
    std::error_code error;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error) {
        return complain(texts.name, "cannot tell where this program is: " + error.message(), 1);
    }
    const auto outcome =
        install ? installNativeHost(nativeHostFolder(), program) : removeNativeHost(nativeHostFolder());
    if (!outcome) {
        return complain(texts.name, outcome.error(), 1);
    }
    std::printf("%s: %s\n", texts.name, outcome.value().c_str());
    return 0;
}

/// Keeps standard output for frames alone: the descriptor returned is the only one that leads there, and whatever
/// prints goes to standard error.
int takeStandardOutput()
{
    const int frames = ::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3);
    ::dup2(STDERR_FILENO, STDOUT_FILENO);
    return frames;
}

/// Qt's own words must not wait for a reader either; its last ones must be out before it ends the process.
void printMessage(QtMsgType type, const QMessageLogContext& context, const QString& text)
{
    const std::string line = qFormatLogMessage(type, context, text).toStdString();
    if (type == QtFatalMsg) {
        complain(texts.name, line);
    } else {
        print(line);
    }
}

} // namespace

int main(int argc, char** argv)
{
    openMissingStandardDescriptors();
    CommandLine line(options);
    if (const auto status = line.readProcess(argc, argv, texts.name, help)) {
        return *status;
    }
    if (line.isSet(installHost) || line.isSet(removeHost)) {
        return changeNativeHost(line, argc);
    }
    FrameWriter output(takeStandardOutput());
    const PrintQueue diagnostics(STDERR_FILENO);
    qInstallMessageHandler(printMessage);
    // A message of many megabytes passes three times as fast through a pipe of the largest ordinary size.
    ::fcntl(STDIN_FILENO, F_SETPIPE_SZ, 1024 * 1024);

    const auto program = DesktopProgram::open(texts, argv);
    if (!program) {
        return complain(texts.name, program.error());
    }
    ServiceAccess service(program.value()->service().choice, program.value()->environment());
    // A panel also closes with its compose window, and then the link goes on.
    QGuiApplication::setQuitOnLastWindowClosed(false);

    MailExtension extension;
    int status = 0;
    {
        LinkPanels panels;
        // By the time somebody presses "Login" it is there.
        QObject::connect(&panels, &LinkPanels::shown, &service, &ServiceAccess::prepare);
        QObject::connect(&ServiceReachability::shared(), &ServiceReachability::changed, &panels,
                         [&output] { output.write(writeStatus(ServiceReachability::shared().problem())); });
        // A mail application ends the process itself, and may ask for a closed panel again.
        if (line.words().empty()) {
            QObject::connect(&panels, &LinkPanels::lastClosedByUser, qGuiApp, &QGuiApplication::quit);
        }
        LinkAnswers answers(extension, program.value()->service());
        const LinkThread link(STDIN_FILENO, output, answers, extension, panels, [&status](const std::string& reason) {
            if (!reason.empty()) {
                print(std::string(texts.name).append(":"), reason);
                status = 1;
            }
            QGuiApplication::quit();
        });
        const int looped = QGuiApplication::exec();
        status = looped != 0 ? looped : status;
    }
    return status;
}
