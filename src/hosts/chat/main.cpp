#include "hosts/chat/ChatApp.h"
#include "platform/appkit/DisplayWatch.h"
#include "platform/appkit/ViewEngine.h"
#include "platform/foundation/NetworkEnvironment.h"
#include "platform/foundation/TerminationSignals.h"
#include "platform/foundation/URLSession.h"

#include <QGuiApplication>
#include <QIcon>

#include <cstdio>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace
{

constexpr int usageStatus = 2;

constexpr auto help =
    "Usage: quillmate-chat\n"
    "\n"
    "The chat with the assistant in a window of its own, about no message. Nobody signs in here, so only\n"
    "a service that takes requests without a token answers.\n"
    "\n"
    "  --help     shows this text and ends\n"
    "  --version  shows the version and ends\n"
    "\n"
    "QUILLMATE_CONNECT_TO=HOST=ADDRESS:PORT[,…] connects to the address in the host's place;\n"
    "QUILLMATE_CA_FILE=FILE names a PEM file with further roots to trust.\n";

int failUsage(std::string_view sentence)
{
    std::fprintf(stderr, "quillmate-chat: %.*s\n", static_cast<int>(sentence.size()), sentence.data());
    return usageStatus;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc > 1) {
        const std::string argument = argv[1];
        if (argc == 2 && argument == "--help") {
            std::fputs(help, stdout);
            return 0;
        }
        if (argc == 2 && argument == "--version") {
            std::puts("quillmate-chat " QUILLMATE_VERSION);
            return 0;
        }
        const std::string wrong = argument == "--help" || argument == "--version" ? argv[2] : argument;
        return failUsage("the argument " + wrong + " is unknown; --help lists what there is");
    }
    if (!quillmate::DisplayWatch::isDisplayNamed()) {
        return failUsage("there is no display to show the chat on; set DISPLAY or WAYLAND_DISPLAY");
    }
    quillmate::ViewEngine::chooseRendering();
    std::optional<quillmate::DisplayWatch> watch(std::in_place, "quillmate-chat", "check DISPLAY or WAYLAND_DISPLAY.");
    const QGuiApplication application(argc, argv);
    watch.reset();
    // Not before: reading certificates wants an application object.
    auto environment = quillmate::NetworkEnvironment::fromProcessEnvironment();
    if (!environment) {
        return failUsage(environment.error());
    }
    quillmate::URLSession::configure(std::move(environment).value());
    QGuiApplication::setApplicationName(QStringLiteral("quillmate-chat"));
    QGuiApplication::setApplicationVersion(QStringLiteral(QUILLMATE_VERSION));
    QGuiApplication::setWindowIcon(QIcon(QStringLiteral(":/quillmate/quillmateLogo.svg")));
    const quillmate::TerminationSignals signals;

    quillmate::ChatApp app;
    app.show();
    return QGuiApplication::exec();
}
