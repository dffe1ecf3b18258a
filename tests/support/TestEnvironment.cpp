#include "support/TestEnvironment.h"

#include "platform/foundation/net/URLSession.h"
#include "support/ProgramRun.h"
#include "support/TestServer.h"

#include <QTemporaryDir>

namespace quillmate
{

QString TestEnvironment::path(const QString& name)
{
    // Older than the settings store, so it goes after that has written its last.
    static const QTemporaryDir folder;
    return folder.filePath(name);
}

TestEnvironment::TestEnvironment()
{
    qputenv("XDG_DATA_HOME", path(QStringLiteral("data")).toLocal8Bit());
    qputenv("XDG_CACHE_HOME", path(QStringLiteral("cache")).toLocal8Bit());
    qunsetenv("QUILLMATE_CONNECT_TO");
    qunsetenv("QUILLMATE_CA_FILE");
}

void TestEnvironment::connectTo(const TestServer& server)
{
    NetworkEnvironment environment;
    const QStringList hosts = serviceHosts() + QStringList(QStringLiteral("other.example"));
    for (const QString& host : hosts) {
        environment.connectTo[host.toLower().toStdString()] = {"127.0.0.1", server.port()};
    }
    environment.rootCertificateFiles.push_back(certificateFile(QStringLiteral("ca.pem")).toStdString());
    URLSession::configure(std::move(environment));
}

QString TestEnvironment::certificateFile(const QString& name)
{
    return QStringLiteral(QUILLMATE_TEST_TLS_DIR "/") + name;
}

} // namespace quillmate
