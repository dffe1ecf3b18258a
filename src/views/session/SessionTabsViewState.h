#pragma once

#include "views/session/DeveloperMenuState.h"
#include "views/session/SessionModalViewState.h"

#include <memory>

#include <QObject>
#include <qqmlregistration.h>

namespace quillmate
{

struct HostedView;
class RepliedMessage;

/// The session panel's state: owns what its parts share. Main thread only.
class SessionTabsViewState : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made with its panel")
    Q_PROPERTY(quillmate::SessionModalViewState* modal READ modal CONSTANT)
    /// The least height of the panel, in points.
    Q_PROPERTY(int customHeight READ customHeight CONSTANT)
    /// Whether the update notice lies over the panel.
    Q_PROPERTY(bool incommingUpdatesAvailable READ incommingUpdatesAvailable NOTIFY incommingUpdatesAvailableChanged)

public:
    /// The panel about a message. `coordinator` is kept as long as the panel.
    SessionTabsViewState(const std::shared_ptr<const RepliedMessage>& message, std::shared_ptr<void> coordinator);

    /// The panel with a new state.
    static HostedView makeView(const std::shared_ptr<const RepliedMessage>& message, std::shared_ptr<void> coordinator);

    [[nodiscard]] SessionModalViewState* modal() { return &m_modal; }
    [[nodiscard]] int customHeight() const { return m_customHeight; }
    [[nodiscard]] static bool incommingUpdatesAvailable();
    [[nodiscard]] SummarizeStateManager& summarizeStateManager() { return *m_summarizeStateManager; }
    [[nodiscard]] ButtonStateManager& buttonStateManager() { return *m_buttonStateManager; }

    Q_INVOKABLE void remindMeLaterClicked() const;
    Q_INVOKABLE void updateNowClicked() const;

    void appeared();
    void disappeared();

Q_SIGNALS:
    void incommingUpdatesAvailableChanged();

private:
    const std::shared_ptr<void> m_coordinator;
    const int m_customHeight;
    const std::shared_ptr<ButtonStateManager> m_buttonStateManager;
    const std::shared_ptr<SummarizeStateManager> m_summarizeStateManager;
    DeveloperMenuState m_developerMenu;
    SessionModalViewState m_modal;
};

} // namespace quillmate
