#include "localservice/ServiceProcess.h"

#include <QFile>
#include <QJsonObject>
#include <QRegularExpression>
#include <QUrl>

#include <utility>

namespace quillmate::localservice
{

namespace
{

constexpr int waitMilliseconds = 30'000;

} // namespace

ServiceProcess::ServiceProcess(QString dataFolder, QStringList options)
    : m_dataFolder(std::move(dataFolder))
    , m_options(std::move(options))
{
}

ServiceProcess::~ServiceProcess()
{
    if (m_process.state() != QProcess::NotRunning) {
        m_process.kill();
        m_process.waitForFinished(waitMilliseconds);
    }
}

bool ServiceProcess::start()
{
    QStringList arguments = {QStringLiteral("--data"), m_dataFolder};
    if (!m_options.contains(QStringLiteral("--port"))) {
        arguments += {QStringLiteral("--port"), QStringLiteral("0")};
    }
    m_process.start(QStringLiteral(QUILLMATE_SERVICE_PROGRAM), arguments + m_options);
    while (!m_process.canReadLine() && m_process.waitForReadyRead(waitMilliseconds)) {
    }
    m_line = QString::fromUtf8(m_process.readLine());
    static const QRegularExpression shape(QStringLiteral("^quillmate-service listening on https://\\S+:(\\d+)\n$"));
    m_port = shape.match(m_line).captured(1).toUShort();
    return m_port != 0;
}

int ServiceProcess::stop()
{
    m_process.terminate();
    const bool ended = m_process.waitForFinished(waitMilliseconds);
    return ended && m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1;
}

QSslCertificate ServiceProcess::root() const
{
    QFile file(m_dataFolder + QStringLiteral("/ca.pem"));
    return file.open(QIODevice::ReadOnly) ? QSslCertificate(&file) : QSslCertificate();
}

HttpExchange ServiceProcess::connect() const
{
    return HttpExchange::secure(m_port, QStringLiteral(QUILLMATE_LIVE_HOST), root());
}

Reply ServiceProcess::get(const QByteArray& path, const QByteArray& token) const
{
    return connect().request("GET " + path + " HTTP/1.1\r\nHost: " QUILLMATE_LIVE_HOST "\r\nAuthorization: Bearer " +
                             token + "\r\n");
}

Reply ServiceProcess::post(const QByteArray& path, const QByteArray& body, const QByteArray& token) const
{
    return connect().request("POST " + path +
                                 " HTTP/1.1\r\nHost: " QUILLMATE_LIVE_HOST
                                 "\r\nContent-Type: application/json\r\nAuthorization: Bearer " +
                                 token + "\r\n",
                             body);
}

QByteArray ServiceProcess::signIn(const QByteArray& name, const QByteArray& email) const
{
    const BegunSession session = beginSession(*this);
    const QByteArray formToken = formTokenOf(loginPage(session).body);
    postForm(session,
             "name=" + name.toPercentEncoding() + "&email=" + email.toPercentEncoding() + "&form_token=" + formToken);
    return get("/plugin-auth/session-request/" + session.id).json()[QStringLiteral("access_token")].toString().toUtf8();
}

BegunSession beginSession(const ServiceProcess& service)
{
    const QJsonObject reply = service.get("/plugin-auth/session-request/").json();
    const QUrl url(reply[QStringLiteral("login_url")].toString());
    BegunSession session;
    session.id = reply[QStringLiteral("id")].toString().toUtf8();
    session.loginPath = url.path().toUtf8();
    session.loginPort = static_cast<quint16>(url.port());
    session.loginHost = url.authority().toUtf8();
    return session;
}

QByteArray formTokenOf(const QByteArray& page)
{
    static const QRegularExpression field(QStringLiteral("name=\"form_token\" value=\"([^\"]*)\""));
    return field.match(QString::fromUtf8(page)).captured(1).toUtf8();
}

Reply postForm(const BegunSession& session, const QByteArray& form, const QByteArray& headers)
{
    const QByteArray host = headers.contains("Host:") ? QByteArray() : "Host: " + session.loginHost + "\r\n";
    return HttpExchange::plain(session.loginPort)
        .request("POST " + session.loginPath + " HTTP/1.1\r\n" + host +
                     "Content-Type: application/x-www-form-urlencoded\r\n" + headers,
                 form);
}

Reply loginPage(const BegunSession& session, const QByteArray& headers)
{
    const QByteArray host = headers.contains("Host:") ? QByteArray() : "Host: " + session.loginHost + "\r\n";
    return HttpExchange::plain(session.loginPort)
        .request("GET " + session.loginPath + " HTTP/1.1\r\n" + host + headers);
}

} // namespace quillmate::localservice
