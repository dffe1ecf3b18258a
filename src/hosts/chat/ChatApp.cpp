#include "hosts/chat/ChatApp.h"

#include "platform/appkit/WindowAppearance.h"
#include "views/chat/ChatViewState.h"

#include <QQuickItem>

namespace quillmate
{
namespace
{

constexpr QSize leastSize(280, 240);

} // namespace

ChatApp::ChatApp()
    : m_content(ChatViewState::makeContentView())
{
    followAppearance(m_window);
    m_window.setTitle(QStringLiteral("Quillmate"));
    m_window.setMinimumSize(leastSize);
    QQuickItem* content = m_content.view()->item();
    m_window.resize(static_cast<int>(content->implicitWidth()), static_cast<int>(content->implicitHeight()));
    content->setParentItem(m_window.contentItem());
    QObject::connect(&m_window, &QQuickWindow::widthChanged, content, [this] { fit(); });
    QObject::connect(&m_window, &QQuickWindow::heightChanged, content, [this] { fit(); });
    fit();
}

ChatApp::~ChatApp()
{
    m_content.view()->item()->setParentItem(nullptr);
}

void ChatApp::fit()
{
    m_content.view()->item()->setSize(m_window.size());
}

} // namespace quillmate
