#pragma once

#include "hosts/preview/MailWindowState.h"
#include "hosts/preview/mail/ComposeDraft.h"

#include <QObject>
#include <QQuickItem>
#include <memory>
#include <qqmlregistration.h>

namespace quillmate
{

class MEExtensionViewController;

/// What one compose window shows: the draft it opens with, and the extension's panel or what stands in its place.
/// Main thread only.
class ComposeWindowState : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the program")

    Q_PROPERTY(QString title READ title CONSTANT)
    Q_PROPERTY(QString to READ to CONSTANT)
    Q_PROPERTY(QString subject READ subject CONSTANT)
    Q_PROPERTY(QString body READ body CONSTANT)
    Q_PROPERTY(QQuickItem* panel READ panel NOTIFY panelChanged)
    Q_PROPERTY(QString panelFailure READ panelFailure NOTIFY panelChanged)

public:
    /// `original` is null for a new message.
    ComposeWindowState(ComposeKind kind, std::shared_ptr<const MailDocument> original);
    ~ComposeWindowState() override;

    [[nodiscard]] QString title() const;
    [[nodiscard]] QString to() const { return QString::fromStdString(m_draft.to); }
    [[nodiscard]] QString subject() const { return QString::fromStdString(m_draft.subject); }
    [[nodiscard]] QString body() const { return QString::fromStdString(m_draft.body); }
    /// The message as the extension gets it, null for a new one.
    [[nodiscard]] std::shared_ptr<const MEMessage> originalMessage() const;

    /// The panel's root, null until there is one.
    [[nodiscard]] QQuickItem* panel() const { return m_panel; }
    [[nodiscard]] QString panelFailure() const { return m_panelFailure; }

    void showPanel(std::shared_ptr<MEExtensionViewController> controller);
    /// Takes the panel out of the window and lets go of it.
    void dropPanel();
    /// Puts a sentence in the panel's place.
    void showPanelFailure(const QString& sentence);

Q_SIGNALS:
    void panelChanged();
    /// The user has closed the window.
    void closed();
    /// The user asks for the window with the message list.
    void messagesRequested();

private:
    const std::shared_ptr<const MailDocument> m_original;
    const ComposeDraft m_draft;
    std::shared_ptr<MEExtensionViewController> m_controller;
    QPointer<QQuickItem> m_panel;
    QString m_panelFailure;
};

} // namespace quillmate
