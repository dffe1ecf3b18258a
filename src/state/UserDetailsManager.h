#pragma once

#include "state/Synchronized.h"

#include <optional>
#include <string>

#include <QObject>

namespace quillmate
{

/// The signed-in user as the service reports it. Read on any thread, written on the main thread only.
class UserDetailsManager : public QObject
{
    Q_OBJECT

public:
    static UserDetailsManager& shared();

    /// The address that goes with the requests; empty until the service has told it.
    [[nodiscard]] std::string email() const { return m_email.get(); }
    void setEmail(std::string email);

    Synchronized<std::optional<std::string>> name;

Q_SIGNALS:
    void emailChanged();

private:
    UserDetailsManager();

    Synchronized<std::string> m_email;
};

} // namespace quillmate
