#pragma once

#include "state/Synchronized.h"

#include <optional>
#include <string>

#include <QObject>

namespace quillmate
{

/// What the version check found. Read on any thread, written on the main thread only.
class IncommingUpdatesManager : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool incommingUpdatesAvailable READ incommingUpdatesAvailable WRITE setIncommingUpdatesAvailable NOTIFY
                   incommingUpdatesAvailableChanged)

public:
    static IncommingUpdatesManager& shared();

    /// The newer version that the service announced.
    Synchronized<std::optional<std::string>> newVersion;
    /// Where it can be downloaded.
    Synchronized<std::optional<std::string>> updateUrl;

    /// Whether the update notice is to be shown.
    [[nodiscard]] bool incommingUpdatesAvailable() const { return m_available.get(); }
    void setIncommingUpdatesAvailable(bool available);

Q_SIGNALS:
    void incommingUpdatesAvailableChanged();

private:
    IncommingUpdatesManager();

    Synchronized<bool> m_available;
};

} // namespace quillmate
