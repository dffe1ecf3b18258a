#include "hosts/startup/ServiceAccess.h"

#include "base/ApplicationFolders.h"
#include "platform/foundation/net/URLSession.h"
#include "state/ServicePlace.h"

#include <QCoreApplication>
#include <QPointer>

#include <utility>

namespace quillmate
{

ServiceAccess::ServiceAccess(ServiceChoice choice, NetworkEnvironment environment)
    : m_environment(std::move(environment))
{
    setServiceOfThisMachine(choice == ServiceChoice::Local);
    if (choice == ServiceChoice::Remote) {
        URLSession::configure(m_environment);
        return;
    }
    m_environment = withoutServiceRoutes(std::move(m_environment)); // Who asks for this machine means it.
    const QString folder = QString::fromStdString((applicationDataFolder() / "service").string());
    m_service = std::make_unique<LocalService>(
        QCoreApplication::applicationDirPath() + QStringLiteral("/quillmate-service"), folder);
    connect(m_service.get(), &LocalService::ready, this, [this] {
        URLSession::configure(withServiceAt(m_environment, m_service->endpoint(), m_service->rootCertificateFile()));
        Q_EMIT ready();
    });
    connect(m_service.get(), &LocalService::failed, this, [this](const QString& sentence) {
        URLSession::refuse(sentence.toStdString());
        waitForNeed(); // Its port is another program's by now, perhaps.
        Q_EMIT failed(sentence);
    });
    waitForNeed();
}

ServiceAccess::~ServiceAccess() = default;

void ServiceAccess::prepare()
{
    if (m_service) {
        m_service->start();
    }
}

void ServiceAccess::waitForNeed()
{
    URLSession::configureWhenNeeded([self = QPointer<ServiceAccess>(this)] {
        if (self) {
            self->prepare();
        }
    });
}

} // namespace quillmate
