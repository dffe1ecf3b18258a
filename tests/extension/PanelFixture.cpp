#include "extension/PanelFixture.h"

#include "platform/appkit/NSWorkspace.h"
#include "platform/foundation/net/URLSessionThread.h"
#include "platform/foundation/schedule/MainSchedule.h"
#include "state/AppVersion.h"
#include "state/AuthManager.h"
#include "state/ReplyEmailManager.h"
#include "state/SummarizeManager.h"
#include "state/UserDetailsManager.h"

#include <QTest>

namespace quillmate
{
namespace
{

QQuickItem* newestVisible(QQuickItem* item, const QString& objectName)
{
    if (!item->isVisible()) {
        return nullptr;
    }
    const auto children = item->childItems();
    for (auto child = children.rbegin(); child != children.rend(); ++child) {
        if (auto* found = newestVisible(*child, objectName)) {
            return found;
        }
    }
    return item->objectName() == objectName ? item : nullptr;
}

} // namespace

PanelFixture::PanelFixture()
{
    TestEnvironment::connectTo(m_server);
    NSWorkspace::shared().setOpener([this](const URL& url) {
        m_opened.push_back(url.absoluteString());
        return true;
    });
    m_window.resize(460, 640);
    m_window.show();
}

PanelFixture::~PanelFixture()
{
    close();
    NSWorkspace::shared().setOpener(nullptr);
}

void PanelFixture::reset()
{
    close();
    // What the case before has asked for must not be answered by this one's server, nor its next poll be sent.
    URLSessionThread::stop();
    m_server.dropConnections();
    MainSchedule::shared().clear();
    m_server.reset();
    m_server.reply("GET /api/v1" + versionCheck(), "{}");
    m_server.reply("GET /api/v1/me", R"({"email":"a@b.example","name":"A"})");
    AuthManager::shared().accessToken.set(std::nullopt);
    UserDetailsManager::shared().setEmail("");
    ReplyEmailManager::shared().update([](ReplyEmail& record) { record = {}; });
    SummarizeManager::shared().requestFailed = false;
    SummarizeManager::shared().responses.set({});
    SummarizeManager::shared().fallbackSummarizeContent.set("");
    clearSettingsStore();
    m_opened.clear();
    m_log.take();
}

std::shared_ptr<ComposeSessionViewController> PanelFixture::show()
{
    close();
    m_controller = ComposeSessionViewController::make();
    QQuickItem* panel = m_controller->view()->item();
    panel->setParentItem(m_window.contentItem());
    panel->setSize(m_window.size());
    return m_controller;
}

void PanelFixture::close()
{
    if (m_controller) {
        m_controller->view()->item()->setParentItem(nullptr);
        m_controller.reset();
    }
}

QQuickItem* PanelFixture::item(const char* objectName) const
{
    return newestVisible(m_window.contentItem(), QString::fromLatin1(objectName));
}

void PanelFixture::click(const char* objectName)
{
    auto* target = item(objectName);
    QVERIFY2(target, objectName);
    QVERIFY(QTest::qWaitForWindowExposed(&m_window));
    m_window.grabWindow(); // Lays out what is new, so that the click meets it.
    const QPointF centre = target->mapToScene({target->width() / 2, target->height() / 2});
    QTest::mouseClick(&m_window, Qt::LeftButton, Qt::NoModifier, centre.toPoint());
}

std::string versionCheck()
{
    return "/apple-version?currentVersion=" + appVersion().value();
}

void useMessage(const char* messageId, const char* content)
{
    ReplyEmailManager::shared().update([&](ReplyEmail& record) {
        record = {"ana@a.example", "Plans", std::nullopt, content, messageId};
    });
}

} // namespace quillmate
