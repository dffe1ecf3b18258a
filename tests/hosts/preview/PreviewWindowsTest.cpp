#include "hosts/preview/PreviewProgram.h"
#include "platform/appkit/MEExtensionViewController.h"
#include "platform/appkit/ViewEngine.h"

#include <QGuiApplication>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>

using namespace quillmate;

namespace
{

class EmptyPanelHandler : public MEComposeSessionHandler
{
public:
    void mailComposeSessionDidBegin(const MEComposeSession&) override {}
    void mailComposeSessionDidEnd(const MEComposeSession&) override {}
    std::shared_ptr<MEExtensionViewController> viewControllerForSession(const MEComposeSession&) override
    {
        return std::make_shared<MEExtensionViewController>();
    }
};

/// Colours what is about the tour, and knows one tracker.
class TourExtension : public MEExtension
{
public:
    std::shared_ptr<MEComposeSessionHandler> handlerForComposeSession(const MEComposeSession&) override
    {
        return std::make_shared<EmptyPanelHandler>();
    }
    std::shared_ptr<MEContentBlocker> handlerForContentBlocker() override { return std::make_shared<Blocker>(); }
    std::shared_ptr<MEMessageActionHandler> handlerForMessageActions() override { return std::make_shared<Actions>(); }
    std::shared_ptr<MEMessageSecurityHandler> handlerForMessageSecurity() override { return nullptr; }

private:
    class Blocker : public MEContentBlocker
    {
    public:
        std::string contentRulesJSON() override
        {
            return "[{\"trigger\":{\"url-filter\":\"/logo\"},\"action\":{\"type\":\"block\"}}]";
        }
    };
    class Actions : public MEMessageActionHandler
    {
    public:
        void decideActionForMessage(const MEMessage& message, const Completion& completion) override
        {
            const bool red = message.subject.find("tour") != std::string::npos;
            completion(red ? std::optional(MEMessageActionDecision{MEMessageAction::setBackgroundColorAction(4)})
                           : std::nullopt);
        }
    };
};

QQuickWindow* visibleWindow(const QString& title)
{
    for (QWindow* window : QGuiApplication::allWindows()) {
        if (window->isVisible() && window->title() == title) {
            return qobject_cast<QQuickWindow*>(window);
        }
    }
    return nullptr;
}

int visibleWindows()
{
    const auto windows = QGuiApplication::allWindows();
    return static_cast<int>(
        std::count_if(windows.begin(), windows.end(), [](QWindow* window) { return window->isVisible(); }));
}

QQuickItem* itemNamed(const QQuickWindow* window, const char* name)
{
    return window->findChild<QQuickItem*>(QLatin1String(name));
}

QString textOf(const QQuickWindow* window, const char* name)
{
    return itemNamed(window, name)->property("text").toString();
}

void click(QQuickWindow* window, const char* name)
{
    const QQuickItem* item = itemNamed(window, name);
    QTest::mouseClick(window, Qt::LeftButton, {}, item->mapToScene(item->boundingRect().center()).toPoint());
}

} // namespace

/// One program from its start to its end, driven through its windows; the functions build on each other.
class PreviewWindowsTest : public QObject
{
    Q_OBJECT

private:
    TourExtension m_extension;
    std::unique_ptr<PreviewProgram> m_program;
    QQuickWindow* m_list = nullptr;

private Q_SLOTS:
    void initTestCase()
    {
        PreviewOptions options;
        options.service = PreviewOptions::Service::Remote;
        options.messages = {QUILLMATE_SAMPLES "/plain.eml", QUILLMATE_SAMPLES "/html-with-plain.eml",
                            QUILLMATE_SAMPLES "/newsletter.eml", QUILLMATE_SAMPLES "/arabic.eml"};
        m_program = std::make_unique<PreviewProgram>(options, NetworkEnvironment{}, m_extension);
        m_program->start();
        QTRY_VERIFY(m_list = visibleWindow(QStringLiteral("Preview Mail")));
        m_list->requestActivate();
        QVERIFY(QTest::qWaitForWindowActive(m_list));
    }

    void arrowKeysChooseMessages()
    {
        QTRY_VERIFY(textOf(m_list, "messageText").startsWith(u"Dear Daniel,"));
        itemNamed(m_list, "messageList")->forceActiveFocus();
        const struct {
            Qt::Key key;
            QString beginning;
        } steps[] = {{Qt::Key_Down, u"Hello Priya,"_qs},
                     {Qt::Key_End, u"الأستاذة ليلى"_qs},
                     {Qt::Key_Down, u"الأستاذة ليلى"_qs},
                     {Qt::Key_Home, u"Dear Daniel,"_qs},
                     {Qt::Key_PageDown, u"الأستاذة ليلى"_qs}};
        for (const auto& step : steps) {
            QTest::keyClick(m_list, step.key);
            QTRY_VERIFY2(textOf(m_list, "messageText").startsWith(step.beginning), qPrintable(step.beginning));
        }
    }

    void decidedMessageIsRed()
    {
        QAbstractItemModel* messages = itemNamed(m_list, "messageList")->property("model").value<QAbstractItemModel*>();
        QVERIFY(messages);
        const auto color = [messages](int row) {
            return messages->data(messages->index(row, 0), MessageListModel::DecidedColorRole).toInt();
        };
        QTRY_COMPARE(color(1), 4);
        QCOMPARE(color(0), 0);
        QCOMPARE(color(2), 0);
        QCOMPARE(color(3), 0);
    }

    void remoteImagesAreTold()
    {
        const QQuickItem* notice = itemNamed(m_list, "remoteImagesNotice");
        QVERIFY(!notice->isVisible());
        QTest::keyClick(m_list, Qt::Key_Up);
        QTRY_VERIFY(notice->isVisible());
        QCOMPARE(notice->property("text"), "3 remote images were not loaded; 1 of them is a known tracker.");
        QVERIFY(textOf(m_list, "messageText").startsWith(u"October at the bakery"));
        QTest::keyClick(m_list, Qt::Key_Up);
        QTRY_VERIFY(textOf(m_list, "messageText").startsWith(u"Hello Priya,"));
        QVERIFY(!notice->isVisible());
    }

    void replyHasAPanelAndCloses()
    {
        click(m_list, "replyButton");
        QQuickWindow* compose = nullptr;
        QTRY_VERIFY(compose = visibleWindow(u"Re: Your place on the three-lake tour, 28 and 29 June"_qs));
        QCOMPARE(textOf(compose, "toField"), "Martina Vogel <martina.vogel@lakeside-cycling.example>");
        QVERIFY(textOf(compose, "bodyArea")
                    .startsWith(u"\n\nOn Thu, 12 June 2025 at 16:40, Lakeside Cycling Club wrote:\n> Hello"));
        QCOMPARE(itemNamed(compose, "bodyArea")->property("cursorPosition").toInt(), 0);
        QTRY_VERIFY(itemNamed(compose, "bodyArea")->hasFocus());

        QQuickItem* holder = itemNamed(compose, "panelHolder");
        QTRY_COMPARE(holder->childItems().size(), 1);
        const QPointer<QQuickItem> panel = holder->childItems().constFirst();
        QCOMPARE(panel->size(), holder->size());
        compose->resize(1400, 700);
        QTRY_COMPARE(panel->height(), 700.0);
        QCOMPARE(panel->width(), 500.0);
        compose->resize(760, 480);
        QTRY_COMPARE(panel->width(), 400.0);

        const QPointer<QQuickWindow> gone = compose;
        click(compose, "closeButton");
        QTRY_VERIFY(gone.isNull());
        QVERIFY(panel.isNull());
        QCOMPARE(visibleWindows(), 1);
    }

    void forwardAndNewMessageStandSideBySide()
    {
        m_list->requestActivate();
        QVERIFY(QTest::qWaitForWindowActive(m_list));
        QTest::keyClick(m_list, Qt::Key_L, Qt::ControlModifier);
        click(m_list, "newMessageButton");
        QQuickWindow* forward = nullptr;
        QQuickWindow* fresh = nullptr;
        QTRY_VERIFY(forward = visibleWindow(u"Fwd: Your place on the three-lake tour, 28 and 29 June"_qs));
        QTRY_VERIFY(fresh = visibleWindow(u"New message"_qs));
        QCOMPARE(textOf(forward, "toField"), QString());
        QVERIFY(textOf(forward, "bodyArea").contains(u"Forwarded message"));
        QCOMPARE(textOf(fresh, "bodyArea"), QString());
        QTRY_COMPARE(itemNamed(forward, "panelHolder")->childItems().size(), 1);
        QTRY_COMPARE(itemNamed(fresh, "panelHolder")->childItems().size(), 1);
        forward->close();
        QTRY_COMPARE(visibleWindows(), 2);
    }

    void closingTheLastWindowEnds()
    {
        QTimer::singleShot(0, this, [] {
            for (QWindow* window : QGuiApplication::topLevelWindows()) {
                window->close();
            }
        });
        QCOMPARE(QGuiApplication::exec(), 0);
        QCOMPARE(visibleWindows(), 0);
    }

    void cleanupTestCase() { m_program.reset(); }
};

int main(int argc, char** argv)
{
    ViewEngine::chooseRendering();
    QGuiApplication application(argc, argv);
    PreviewWindowsTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "PreviewWindowsTest.moc"
