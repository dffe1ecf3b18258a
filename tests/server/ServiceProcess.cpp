#include "server/ServiceProcess.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QUrl>

#include <utility>

using namespace Qt::StringLiterals;

namespace quillmate::server
{

ServiceProcess::ServiceProcess(QString dataFolder, QStringList options)
    : m_run(QStringLiteral(QUILLMATE_SERVICE_PROGRAM), m_surroundings)
    , m_dataFolder(std::move(dataFolder))
    , m_options(std::move(options))
{
}

bool ServiceProcess::start()
{
    m_run.start(QStringList{u"--data"_s, m_dataFolder, u"--port"_s, u"0"_s} + m_options);
    if (!m_run.waitForOutput("\n")) {
        return false;
    }
    m_line = QString::fromUtf8(m_run.output().left(m_run.output().indexOf('\n') + 1));
    static const QRegularExpression shape(u"^quillmate-service listening on https://\\S+:(\\d+)\n$"_s);
    m_port = shape.match(m_line).captured(1).toUShort();
    return m_port != 0;
}

QSslCertificate ServiceProcess::root() const
{
    QFile file(m_dataFolder + u"/ca.pem"_s);
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
    return get("/plugin-auth/session-request/" + session.id).json()[u"access_token"_s].toString().toUtf8();
}

QByteArray bodyOf(QJsonObject fields)
{
    for (const char* name : {"email", "plugin_source", "plugin_version"}) {
        fields[QString::fromUtf8(name)] = u"x"_s;
    }
    return QJsonDocument(fields).toJson(QJsonDocument::Compact);
}

BegunSession beginSession(const ServiceProcess& service)
{
    const QJsonObject reply = service.get("/plugin-auth/session-request/").json();
    const QUrl url(reply[u"login_url"_s].toString());
    BegunSession session;
    session.id = reply[u"id"_s].toString().toUtf8();
    session.loginPath = url.path().toUtf8();
    session.loginPort = static_cast<quint16>(url.port());
    session.loginHost = url.authority().toUtf8();
    return session;
}

QByteArray formTokenOf(const QByteArray& page)
{
    static const QRegularExpression field(u"name=\"form_token\" value=\"([^\"]*)\""_s);
    return field.match(QString::fromUtf8(page)).captured(1).toUtf8();
}

Reply postForm(const BegunSession& session, const QByteArray& form, const QByteArray& headers)
{
    return HttpExchange::plain(session.loginPort)
        .request("POST " + session.loginPath + " HTTP/1.1\r\nHost: " + session.loginHost +
                     "\r\nContent-Type: application/x-www-form-urlencoded\r\n" + headers,
                 form);
}

Reply loginPage(const BegunSession& session)
{
    return HttpExchange::plain(session.loginPort)
        .request("GET " + session.loginPath + " HTTP/1.1\r\nHost: " + session.loginHost + "\r\n");
}

} // namespace quillmate::server
