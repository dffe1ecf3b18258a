#pragma once

#include "server/HttpExchange.h"
#include "support/ProgramRun.h"

#include <QString>
#include <QStringList>

namespace quillmate::server
{

/// The program, started from outside on a free port.
class ServiceProcess
{
public:
    explicit ServiceProcess(QString dataFolder, QStringList options = {});

    /// Starts it and waits for the line that says it listens; false when that does not come.
    bool start();
    /// Sends SIGTERM and returns the exit status, or -1 when it did not end by itself.
    int stop() { return m_run.terminate(); }
    [[nodiscard]] quint16 port() const { return m_port; }
    [[nodiscard]] QString line() const { return m_line; }
    [[nodiscard]] QByteArray standardError() { return m_run.errors(); }
    [[nodiscard]] QSslCertificate root() const;

    /// A new verified connection for the live host.
    [[nodiscard]] HttpExchange connect() const;
    [[nodiscard]] Reply get(const QByteArray& path, const QByteArray& token = {}) const;
    [[nodiscard]] Reply post(const QByteArray& path, const QByteArray& body, const QByteArray& token) const;
    /// Signs in with the form and returns the access token.
    [[nodiscard]] QByteArray signIn(const QByteArray& name, const QByteArray& email) const;

private:
    ProgramSurroundings m_surroundings;
    ProgramRun m_run;
    QString m_dataFolder;
    QStringList m_options;
    QString m_line;
    quint16 m_port = 0;
};

/// A body with these fields, and with what every client says beside them.
QByteArray bodyOf(QJsonObject fields);

/// What the service says about a new sign-in.
struct BegunSession {
    QByteArray id;
    QByteArray loginPath;
    QByteArray loginHost;
    quint16 loginPort = 0;
};
BegunSession beginSession(const ServiceProcess& service);
/// The hidden form token of a page.
QByteArray formTokenOf(const QByteArray& page);
/// Posts the form to the plain listener with these further header lines.
Reply postForm(const BegunSession& session, const QByteArray& form, const QByteArray& headers = {});
/// The page as a browser gets it.
Reply loginPage(const BegunSession& session);

} // namespace quillmate::server
