#pragma once

#include <QObject>
#include <QString>
#include <qqmlregistration.h>

namespace quillmate
{

/// What a panel's sign-in screen says of the sign-in on its way. Main thread only.
class LoginProgress : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made with its screen")
    /// The service is being asked for the page to sign in on.
    Q_PROPERTY(bool asking READ isAsking NOTIFY changed)
    /// Why the last press of "Login" brought no page, and what to do; empty when nothing is wrong.
    Q_PROPERTY(QString problem READ problem NOTIFY changed)

public:
    using QObject::QObject;

    [[nodiscard]] bool isAsking() const { return m_asking; }
    [[nodiscard]] const QString& problem() const { return m_problem; }

    void ask() { set(true, {}); }
    /// The asking is over; `problem` is empty when it brought the page.
    void finish(const QString& problem) { set(false, problem); }

Q_SIGNALS:
    void changed();

private:
    void set(bool asking, const QString& problem)
    {
        if (m_asking != asking || m_problem != problem) {
            m_asking = asking;
            m_problem = problem;
            Q_EMIT changed();
        }
    }

    bool m_asking = false;
    QString m_problem;
};

} // namespace quillmate
