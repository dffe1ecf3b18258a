#pragma once

#include "hosts/startup/LocalService.h"
#include "hosts/startup/ServiceChoice.h"

#include <QObject>

#include <memory>

namespace quillmate
{

/// Leads the program's requests to the service that was chosen. That of this machine is started when the first request
/// wants it, and again when it has ended since; it ends with this object. Main thread; within the application object.
class ServiceAccess : public QObject
{
    Q_OBJECT

public:
    ServiceAccess(ServiceChoice choice, NetworkEnvironment environment);
    ~ServiceAccess() override;

    /// Starts the service of this machine ahead of the first request; nothing for another one, nor for one that runs.
    void prepare();

Q_SIGNALS:
    /// Requests reach the service of this machine.
    void ready();
    /// The service of this machine is not there: one sentence for the user. The next request tries again.
    void failed(const QString& sentence);

private:
    void waitForNeed();

    NetworkEnvironment m_environment;
    std::unique_ptr<LocalService> m_service; // Of this machine alone.
};

} // namespace quillmate
