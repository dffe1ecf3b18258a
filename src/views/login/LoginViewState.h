#pragma once

#include "views/login/LoginProgress.h"
#include "views/session/DeveloperMenuState.h"

#include <functional>
#include <memory>

#include <QObject>
#include <qqmlregistration.h>

namespace quillmate
{

struct HostedView;
class RepliedMessage;

/// The sign-in screen's state. Main thread only.
class LoginViewState : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made with its screen")
    Q_PROPERTY(quillmate::DeveloperMenuState* developerMenu READ developerMenu CONSTANT)
    Q_PROPERTY(quillmate::LoginProgress* progress READ progress CONSTANT)
    /// Why the user, who has signed in before, has to do so again; empty when there is nothing to say.
    Q_PROPERTY(QString explanation READ explanation CONSTANT)
    /// The least height of the screen, in points.
    Q_PROPERTY(int customHeight READ customHeight CONSTANT)

public:
    LoginViewState(const RepliedMessage& message, std::function<void()> onLoginButtonTap,
                   std::shared_ptr<LoginProgress> progress = std::make_shared<LoginProgress>());

    /// The screen of a message's panel with a new state; pressing its button runs `onLoginButtonTap`, and `progress`
    /// tells what comes of it.
    static HostedView makeView(const RepliedMessage& message, std::function<void()> onLoginButtonTap,
                               std::shared_ptr<LoginProgress> progress = std::make_shared<LoginProgress>());

    [[nodiscard]] DeveloperMenuState* developerMenu() { return &m_developerMenu; }
    [[nodiscard]] LoginProgress* progress() { return m_progress.get(); }
    [[nodiscard]] const QString& explanation() const { return m_explanation; }
    [[nodiscard]] int customHeight() const { return m_customHeight; }

    Q_INVOKABLE void loginButtonTapped() const { m_onLoginButtonTap(); }

    void appeared();
    void disappeared();

private:
    const std::function<void()> m_onLoginButtonTap;
    const std::shared_ptr<LoginProgress> m_progress;
    const QString m_explanation;
    const int m_customHeight;
    bool m_hasAddedEventMonitor = false;
    DeveloperMenuState m_developerMenu;
};

} // namespace quillmate
