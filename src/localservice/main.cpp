#include "localservice/Certificates.h"
#include "localservice/CryptographyEnd.h"
#include "localservice/HttpServer.h"
#include "localservice/Options.h"
#include "localservice/PrivateFiles.h"
#include "localservice/ServiceApi.h"
#include "localservice/engine/BuiltinEngine.h"
#include "localservice/model/OpenAiEngine.h"

#include <QCoreApplication>
#include <QNetworkInterface>
#include <QSocketNotifier>
#include <QSslCertificate>
#include <QSslKey>
#include <QTimer>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <sys/signalfd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

using namespace quillmate::localservice;

constexpr int failed = 1;
constexpr int misused = 2;
constexpr mode_t ownerOnly = 077;

int complain(const std::string& sentence, int status)
{
    std::fprintf(stderr, "quillmate-service: %s\n", sentence.c_str());
    return status;
}

/// The end signals as a descriptor. Made before the first thread, so that every thread inherits the mask.
int endSignals()
{
    std::signal(SIGPIPE, SIG_IGN);
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    return signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
}

bool isWildcard(const QHostAddress& address)
{
    return address == QHostAddress(QHostAddress::AnyIPv4) || address == QHostAddress(QHostAddress::AnyIPv6);
}

std::vector<std::string> certifiedAddresses(const QHostAddress& listening)
{
    if (!isWildcard(listening)) {
        return {listening.toString().section(u'%', 0, 0).toStdString()};
    }
    std::vector<std::string> addresses;
    for (const QHostAddress& address : QNetworkInterface::allAddresses()) {
        addresses.push_back(address.toString().section(u'%', 0, 0).toStdString());
    }
    return addresses;
}

std::variant<QSslConfiguration, std::string> tlsConfiguration(const Options& options)
{
    auto made = serverCertificate(options.dataFolder, {QUILLMATE_LIVE_HOST, QUILLMATE_STAGING_HOST, QUILLMATE_DEV_HOST},
                                  certifiedAddresses(QHostAddress(QString::fromStdString(options.listenAddress))));
    if (const auto* failure = std::get_if<std::string>(&made)) {
        return *failure;
    }
    const auto& server = std::get<ServerCertificate>(made);
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.setLocalCertificate(QSslCertificate(server.certificate));
    configuration.setPrivateKey(QSslKey(server.key, QSsl::Ec));
    configuration.setPeerVerifyMode(QSslSocket::VerifyNone); // clients have no certificate
    configuration.setAllowedNextProtocols({QByteArrayLiteral("http/1.1")});
    if (configuration.localCertificate().isNull() || configuration.privateKey().isNull()) {
        return "cannot use the certificate in " + options.dataFolder +
               ": remove server.pem there to have a new one made";
    }
    return configuration;
}

std::string originOf(const QHostAddress& address, unsigned port)
{
    const std::string text = address.toString().toStdString();
    const bool isV6 = address.protocol() == QAbstractSocket::IPv6Protocol;
    return "https://" + (isV6 ? '[' + text + ']' : text) + ':' + std::to_string(port);
}

/// The engine that was asked for, or why there is none.
std::variant<std::unique_ptr<Engine>, std::string> engineFor(const Options& options)
{
    if (options.engine == Options::Engine::Builtin) {
        return std::make_unique<BuiltinEngine>();
    }
    const std::string key = qgetenv("QUILLMATE_OPENAI_API_KEY").toStdString();
    if (auto failure = keyFailure(key)) {
        return *failure;
    }
    const auto read = readModelAddress(options.openAiUrl);
    if (const auto* failure = std::get_if<std::string>(&read)) {
        return "--openai-url cannot be that: " + *failure;
    }
    const auto& address = std::get<ModelAddress>(read);
    const auto log = [](const std::string& line) { complain(line, 0); };
    if (address.isInClear()) {
        log("messages" + std::string(key.empty() ? "" : " and the key") +
            " go over the network unencrypted: give --openai-url as https");
    }
    return std::make_unique<OpenAiEngine>(
        OpenAiEngine::Settings{address, options.openAiModel, key, options.openAiContext, {}}, log);
}

int serve(const Options& options, Engine& engine, int signalDescriptor)
{
    if (auto failure = makePrivateFolder(options.dataFolder)) {
        return complain(*failure + ": give another folder with --data", failed);
    }
    auto configuration = tlsConfiguration(options);
    if (const auto* failure = std::get_if<std::string>(&configuration)) {
        return complain(*failure, failed);
    }
    auto opened = ServiceStore::open(options.dataFolder);
    if (const auto* failure = std::get_if<std::string>(&opened)) {
        return complain(*failure, failed);
    }
    const auto store = std::get<std::unique_ptr<ServiceStore>>(std::move(opened));

    ServiceApi api(*store, engine, options.update);
    // A thread that waits for a language model takes no processor.
    constexpr int threadsThatWait = 9;
    HttpServer server(api,
                      options.engine == Options::Engine::OpenAi ? threadsThatWait : HttpServer::usualAnswerThreads);
    const QHostAddress address(QString::fromStdString(options.listenAddress));
    if (!server.listenSecurely(address, static_cast<quint16>(options.port),
                               std::get<QSslConfiguration>(configuration))) {
        return complain("cannot listen on " + options.listenAddress + " port " + std::to_string(options.port) + ": " +
                            server.errorText().toStdString() + "; choose another with --port or --listen",
                        failed);
    }
    const std::string origin = originOf(address, server.securePort());
    if (address.isLoopback()) {
        // A person's browser does not know the service's own root, so on this machine the sign-in pages are plain HTTP.
        if (!server.listenForLoginPages()) {
            return complain("cannot listen on 127.0.0.1 for the sign-in pages: " + server.errorText().toStdString(),
                            failed);
        }
        api.setLoginPort(server.loginPort());
        api.setLoginOrigin("http://127.0.0.1:" + std::to_string(server.loginPort()));
    } else if (!isWildcard(address)) {
        api.setLoginOrigin(origin);
    }

    QSocketNotifier endNotifier(signalDescriptor, QSocketNotifier::Read);
    QObject::connect(&endNotifier, &QSocketNotifier::activated, &server, [&] {
        endNotifier.setEnabled(false);
        engine.end();
        server.shutDown();
    });
    QObject::connect(&server, &HttpServer::drained, qApp, &QCoreApplication::quit);
    // A service that runs for months renews its certificate without a restart.
    QTimer renewal;
    QObject::connect(&renewal, &QTimer::timeout, &server, [&] {
        const auto renewed = tlsConfiguration(options);
        if (const auto* failure = std::get_if<std::string>(&renewed)) {
            complain(*failure, failed);
            return;
        }
        server.setTlsConfiguration(std::get<QSslConfiguration>(renewed));
    });
    renewal.start(std::chrono::hours(24));

    std::printf("quillmate-service listening on %s\n", origin.c_str());
    std::fflush(stdout);
    const int status = QCoreApplication::exec();
    if (!server.waitForAnswers()) {
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
    const int signalDescriptor = endSignals();
    umask(ownerOnly);
    QCoreApplication application(argc, argv);
    const auto read = readOptions({argv + 1, argv + argc}, defaultDataFolder());
    if (const auto* failure = std::get_if<std::string>(&read)) {
        return complain(*failure, misused);
    }
    const auto& options = std::get<Options>(read);
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
    if (const auto* failure = std::get_if<std::string>(&engine)) {
        return complain(*failure, misused);
    }
    return serve(options, *std::get<std::unique_ptr<Engine>>(engine), signalDescriptor);
}
