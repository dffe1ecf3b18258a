#pragma once

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
    /// The least height of the screen, in points.
    Q_PROPERTY(int customHeight READ customHeight CONSTANT)

public:
    LoginViewState(const RepliedMessage& message, std::function<void()> onLoginButtonTap);

    /// The screen of a message's panel with a new state; pressing its button runs `onLoginButtonTap`.
    static HostedView makeView(const RepliedMessage& message, std::function<void()> onLoginButtonTap);

    [[nodiscard]] DeveloperMenuState* developerMenu() { return &m_developerMenu; }
    [[nodiscard]] int customHeight() const { return m_customHeight; }

    Q_INVOKABLE void loginButtonTapped() const { m_onLoginButtonTap(); }

    void appeared();
    void disappeared();

private:
    const std::function<void()> m_onLoginButtonTap;
    const int m_customHeight;
    bool m_hasAddedEventMonitor = false;
    DeveloperMenuState m_developerMenu;
};

} // namespace quillmate
