#include "base/ApplicationFolders.h"
#include "base/CryptographyEnd.h"
#include "base/Descriptors.h"
#include "base/PrivateFiles.h"
#include "base/TerminalText.h"
#include "base/TerminationSignals.h"
#include "server/Options.h"
#include "server/ServiceApi.h"
#include "server/engine/BuiltinEngine.h"
#include "server/http/Certificates.h"
#include "server/http/HttpServer.h"
#include "server/model/OpenAiEngine.h"

#include <QCoreApplication>
#include <QNetworkInterface>
#include <QTimer>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

using namespace quillmate;
using namespace quillmate::server;

constexpr int failed = 1;
constexpr int misused = 2;
constexpr mode_t ownerOnly = 077;
// Longer than the server and the store take at most.
constexpr std::chrono::seconds longestEnd{15};

int complain(const std::string& sentence, int status)
{
    std::fprintf(stderr, "quillmate-service: %s\n", textFor(STDERR_FILENO, sentence).c_str());
    return status;
}

bool isWildcard(const QHostAddress& address)
{
    return address == QHostAddress(QHostAddress::AnyIPv4) || address == QHostAddress(QHostAddress::AnyIPv6);
}

std::vector<std::string> certifiedAddresses(const QHostAddress& listening)
{
    const QList<QHostAddress> all =
        isWildcard(listening) ? QNetworkInterface::allAddresses() : QList<QHostAddress>{listening};
    std::vector<std::string> addresses;
    for (const QHostAddress& address : all) {
        addresses.push_back(address.toString().section(u'%', 0, 0).toStdString());
    }
    return addresses;
}

Result<ServerCertificate, std::string> certificateFor(const Options& options)
{
    return serverCertificate(options.dataFolder, {QUILLMATE_LIVE_HOST, QUILLMATE_STAGING_HOST, QUILLMATE_DEV_HOST},
                             certifiedAddresses(options.listenAddress));
}

std::string originOf(const QHostAddress& address, unsigned port)
{
    const std::string text = address.toString().toStdString();
    const bool isV6 = address.protocol() == QAbstractSocket::IPv6Protocol;
    return "https://" + (isV6 ? '[' + text + ']' : text) + ':' + std::to_string(port);
}

/// The engine that was asked for, or why there is none.
Result<std::unique_ptr<Engine>, std::string> engineFor(const Options& options)
{
    using Made = Result<std::unique_ptr<Engine>, std::string>;
    if (options.engine == Options::Engine::Builtin) {
        return Made(std::make_unique<BuiltinEngine>());
    }
    const std::string key = qgetenv("QUILLMATE_OPENAI_API_KEY").toStdString();
    if (const auto checked = checkKey(key); !checked) {
        return Made::failure(checked.error());
    }
    const auto log = [](const std::string& line) { complain(line, 0); };
    if (options.openAiAddress->isInClear()) {
        log("messages" + std::string(key.empty() ? "" : " and the key") +
            " go over the network unencrypted: give --openai-url as https");
    }
    return Made(std::make_unique<OpenAiEngine>(
        OpenAiEngine::Settings{*options.openAiAddress, options.openAiModel, key, options.openAiContext, {}}, log));
}

int serve(const Options& options, Engine& engine)
{
    if (const auto made = makePrivateFolder(options.dataFolder); !made) {
        return complain(made.error() + ": give another folder with --data", failed);
    }
    const auto certificate = certificateFor(options);
    if (!certificate) {
        return complain(certificate.error(), failed);
    }
    auto opened = ServiceStore::open(options.dataFolder);
    if (!opened) {
        return complain(opened.error().text, failed);
    }
    const auto store = std::move(opened).value();

    ServiceApi api(*store, engine, options.update);
    HttpLimits limits;
    if (options.engine == Options::Engine::OpenAi) {
        limits.slowAnswers = 8; // A thread that waits for a language model takes no processor.
    }
    HttpServer server(api, limits);
    const QHostAddress& address = options.listenAddress;
    const auto port = server.listenSecurely(address, static_cast<quint16>(options.port));
    if (!port) {
        return complain("cannot listen on " + address.toString().toStdString() + " port " +
                            std::to_string(options.port) + ": " + port.error() +
                            "; choose another with --port or --listen",
                        failed);
    }
    const std::string origin = originOf(address, port.value());
    if (address.isLoopback()) {
        // A person's browser does not know the service's own root, so on this machine the sign-in pages are plain HTTP.
        const auto loginPort = server.listenForLoginPages();
        if (!loginPort) {
            return complain("cannot listen on 127.0.0.1 for the sign-in pages: " + loginPort.error(), failed);
        }
        api.setLoginPort(loginPort.value());
    } else if (!isWildcard(address)) {
        api.setLoginOrigin(origin);
    }
    if (!server.setCertificate(certificate.value())) {
        return complain("cannot use the certificate in " + options.dataFolder +
                            ": remove server.pem there to have a new one made",
                        failed);
    }
    if (!server.start()) {
        return complain("cannot start the threads that answer: the machine has no room for them", failed);
    }

    // A service that runs for months renews its certificate without a restart.
    QTimer renewal;
    QObject::connect(&renewal, &QTimer::timeout, &server, [&] {
        const auto renewed = certificateFor(options);
        if (!renewed) {
            complain(renewed.error(), failed);
        } else if (!server.setCertificate(renewed.value())) {
            complain("cannot use the certificate in " + options.dataFolder, failed);
        }
    });
    renewal.start(std::chrono::hours(24));

    std::printf("quillmate-service listening on %s\n", origin.c_str());
    std::fflush(stdout);
    const int status = QCoreApplication::exec();
    engine.end();
    if (!server.shutDown()) {
        // An answer that takes longer must not keep the program; its thread cannot be ended by itself.
        constexpr std::chrono::milliseconds closeLimit{500};
        if (!store->closeEarly(closeLimit)) {
            complain("ended while the database was in use; its log is read at the next start", status);
        }
        std::_Exit(status);
    }
    return status;
}

} // namespace

int main(int argc, char* argv[])
{
    openMissingStandardDescriptors();
    umask(ownerOnly);
    QCoreApplication application(argc, argv);
    const TerminationSignals signals(longestEnd);
    const auto read = readOptions(QCoreApplication::arguments(), (applicationDataFolder() / "service").string());
    if (!read) {
        return complain(read.error(), misused);
    }
    const Options& options = read.value();
    if (options.help) {
        std::fputs(usageText().c_str(), stdout);
        return 0;
    }
    if (options.version) {
        std::puts("quillmate-service " QUILLMATE_VERSION);
        return 0;
    }
    leaveCryptographyToProcessEnd();
    const auto engine = engineFor(options);
    if (!engine) {
        return complain(engine.error(), misused);
    }
    return serve(options, *engine.value());
}
