#pragma once

#include "features/ButtonStateManager.h"
#include "views/widgets/ShownText.h"

#include <memory>

#include <QObject>
#include <qqmlregistration.h>

namespace quillmate
{

/// The "Quick response" tab and what lies over the tabs. Main thread only.
class ReplySectionState : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made with its panel")
    /// Whether the reply is shown; else what the section is for.
    Q_PROPERTY(bool showsReply READ showsReply NOTIFY sectionChanged)
    Q_PROPERTY(QString replyText READ replyText NOTIFY replyChanged)
    /// Says so when only a part of the reply is shown.
    Q_PROPERTY(QString replyNote READ replyNote NOTIFY replyChanged)
    Q_PROPERTY(bool isLoading READ isLoading NOTIFY isLoadingChanged)
    Q_PROPERTY(bool showToast READ showToast NOTIFY showToastChanged)
    Q_PROPERTY(QString toastMessage READ toastMessage NOTIFY toastMessageChanged)
    /// The notice that the reply was copied.
    Q_PROPERTY(bool showTooltip READ showTooltip NOTIFY showTooltipChanged)

public:
    explicit ReplySectionState(std::shared_ptr<ButtonStateManager> manager);

    [[nodiscard]] bool showsReply() const { return m_manager->section() == ButtonStateManager::Section::Reply; }
    [[nodiscard]] QString replyText() const { return m_reply.text; }
    [[nodiscard]] QString replyNote() const { return m_reply.note; }
    [[nodiscard]] bool isLoading() const { return m_manager->isGenerateResponseLoading(); }
    [[nodiscard]] bool showToast() const { return m_manager->showToast(); }
    [[nodiscard]] QString toastMessage() const { return m_toast.text; }
    [[nodiscard]] bool showTooltip() const { return m_showTooltip; }
    void setShowTooltip(bool show);

    /// "Generate response" and "Regenerate response".
    Q_INVOKABLE void generateClicked();
    Q_INVOKABLE void submitClicked();
    Q_INVOKABLE void copyClicked();

Q_SIGNALS:
    void sectionChanged();
    void replyChanged();
    void isLoadingChanged();
    void showToastChanged();
    void toastMessageChanged();
    void showTooltipChanged();

private:
    void takeReply();
    void hideToastLater();

    const std::shared_ptr<ButtonStateManager> m_manager;
    ShownText m_reply;
    ShownText m_toast;
    bool m_showTooltip = false;
    unsigned m_toasts = 0; // Announced so far.
    unsigned m_copies = 0; // Made so far.
};

} // namespace quillmate
