#include "hosts/MadeUpExtension.h"
#include "hosts/preview/PreviewProgram.h"
#include "platform/appkit/NSAppearance.h"
#include "platform/appkit/ViewEngine.h"
#include "support/Contrast.h"
#include "support/TestProgram.h"
#include "views/ViewTestApplication.h"

#include <QQmlComponent>
#include <QQuickItem>
#include <QQuickTextDocument>
#include <QQuickWindow>
#include <QTextBlock>
#include <QTextDocument>

using namespace quillmate;

namespace
{

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
    MadeUpExtension m_extension;
    ServiceAccess m_service{ServiceChoice::Remote, {}};
    std::unique_ptr<PreviewProgram> m_program;
    QQuickWindow* m_list = nullptr;

    QQuickItem* row(int index) const
    {
        QQuickItem* found = nullptr;
        QMetaObject::invokeMethod(itemNamed(m_list, "messageList"), "itemAtIndex", Q_RETURN_ARG(QQuickItem*, found),
                                  Q_ARG(int, index));
        return found;
    }
    QColor background(int index) const
    {
        const auto color = row(index)->findChild<QQuickItem*>("rowBackground")->property("color").value<QColor>();
        const QQuickItem* ground = itemNamed(m_list, "messageList")->parentItem();
        return color.alpha() == 0 ? ground->property("color").value<QColor>() : color;
    }
    void choose(int index) const
    {
        QTest::keyClick(m_list, Qt::Key_Home);
        for (int i = 0; i < index; ++i) {
            QTest::keyClick(m_list, Qt::Key_Down);
        }
    }
    void pointAt(int index) const { QTest::mouseMove(m_list, {170, index < 0 ? 600 : index * 90 + 45}); }
    void checkRow(int index) const
    {
        const QColor color = background(index);
        // Whatever else it is, it is red, and told from the other.
        QCOMPARE(color.red() > color.green() + 20 && color.red() > color.blue() + 20, index == 0);
        int texts = 0;
        for (QQuickItem* text : row(index)->findChildren<QQuickItem*>()) {
            if (text->inherits("QQuickText")) {
                ++texts;
                QVERIFY2(contrastOf(text->property("color").value<QColor>(), color) >= 4.5,
                         qPrintable(text->property("text").toString()));
            }
        }
        QCOMPARE(texts, 4);
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_extension.rules = R"([{"trigger":{"url-filter":"/logo"},"action":{"type":"block"}}])";
        // The first message red, the third in a colour unknown here.
        m_extension.color = [colors = std::vector{0, 0, 7, 0, 4}](const MEMessage&) mutable {
            const int color = colors.back();
            colors.pop_back();
            return color;
        };
        PreviewOptions options;
        options.service = ServiceChoice::Remote;
        options.messages = {QUILLMATE_SAMPLES "/plain.eml", QUILLMATE_SAMPLES "/html-with-plain.eml",
                            QUILLMATE_SAMPLES "/newsletter.eml", QUILLMATE_SAMPLES "/arabic.eml",
                            QUILLMATE_SAMPLES "/long-thread.eml"};
        m_program = std::make_unique<PreviewProgram>(options, m_service, m_extension);
        m_program->start();
        QTRY_VERIFY(m_list = visibleWindow(QStringLiteral("Preview Mail")));
        m_list->requestActivate();
        QVERIFY(QTest::qWaitForWindowActive(m_list));
    }

    void rowsCanBeRead()
    {
        itemNamed(m_list, "messageList")->forceActiveFocus();
        QTRY_VERIFY(row(0) && row(2));
        for (const bool dark : {false, true, false}) {
            NSAppearance::shared().setDark(dark);
            for (const bool hovered : {false, true}) {
                for (const bool current : {false, true}) {
                    for (const int index : {0, 1}) {
                        choose(current ? index : 2);
                        pointAt(hovered ? index : -1);
                        checkRow(index);
                    }
                }
            }
        }
        const char* described[] = {"Red background", "", ""}; // Red is the one that is known.
        for (int i = 0; i < 3; ++i) {
            QCOMPARE(QAccessible::queryAccessibleInterface(row(i))->text(QAccessible::Description), described[i]);
        }
    }

    void redTakesNothingFromChoiceAndPointer()
    {
        choose(1);
        pointAt(-1);
        const QColor resting = background(0);
        pointAt(0);
        QTRY_VERIFY(background(0) != resting);
        const QColor hovered = background(0);
        choose(0);
        QVERIFY(background(0) != resting && background(0) != hovered);
    }

    void paragraphsRunTheirOwnWay()
    {
        QQmlComponent component(&ViewEngine::shared(),
                                QUrl(QStringLiteral("qrc:/qt/qml/Quillmate/Preview/MessageBody.qml")));
        const std::unique_ptr<QObject> body(component.createWithInitialProperties(
            {{"name", "Message"}, {"areaName", "area"}, {"text", QStringLiteral("\n12 Hello\n> سلام\n>\n> x\n>")}}));
        QVERIFY2(body, qPrintable(component.errorString()));
        const auto* text =
            body->findChild<QObject*>("area")->property("textDocument").value<QQuickTextDocument*>()->textDocument();
        QList<Qt::LayoutDirection> found;
        for (QTextBlock block = text->begin(); block.isValid(); block = block.next()) {
            found.append(block.blockFormat().layoutDirection());
        }
        QCOMPARE(found, QList({Qt::LayoutDirectionAuto, Qt::LeftToRight, Qt::RightToLeft, Qt::RightToLeft,
                               Qt::LeftToRight, Qt::LeftToRight}));
        QVERIFY(!text->isUndoAvailable());
    }

    void arrowKeysChooseMessages()
    {
        QTRY_VERIFY(textOf(m_list, "messageText").startsWith(u"Dear Daniel,"));
        const struct {
            Qt::Key key;
            QString beginning;
        } steps[] = {{Qt::Key_Down, u"Hello Priya,"_qs},
                     {Qt::Key_End, u"Hello everybody,"_qs},
                     {Qt::Key_Down, u"Hello everybody,"_qs},
                     {Qt::Key_Home, u"Dear Daniel,"_qs},
                     {Qt::Key_PageDown, u"Hello everybody,"_qs}};
        for (const auto& step : steps) {
            QTest::keyClick(m_list, step.key);
            QTRY_VERIFY2(textOf(m_list, "messageText").startsWith(step.beginning), qPrintable(step.beginning));
        }
    }

    void chosenMessageIsShownFromItsTop()
    {
        m_list->resize(760, 480);
        const QQuickItem* text = itemNamed(m_list, "messageText");
        const auto place = [text] { return text->mapToScene({}).y(); };
        QTRY_VERIFY(text->height() > 1000);
        const double top = place();
        QVERIFY(text->parentItem()->parentItem()->setProperty("contentY", 700));
        QVERIFY(place() < top - 600);
        QTest::keyClick(m_list, Qt::Key_Up);
        QTRY_VERIFY(textOf(m_list, "messageText").startsWith(u"الأستاذة ليلى"));
        QCOMPARE(place(), top);
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
        itemNamed(m_list, "messageList")->forceActiveFocus();
        for (const bool repeated : {false, true, true}) { // A held key opens one window.
            QKeyEvent event(QEvent::KeyPress, Qt::Key_Return, {}, {}, repeated);
            QCoreApplication::sendEvent(m_list, &event);
        }
        QQuickWindow* compose = nullptr;
        QTRY_VERIFY(compose = visibleWindow(u"Re: Your place on the three-lake tour, 28 and 29 June"_qs));
        QCOMPARE(textOf(compose, "toField"), "Martina Vogel <martina.vogel@lakeside-cycling.example>");
        QVERIFY(textOf(compose, "bodyArea")
                    .startsWith(u"\n\nOn Thu, 12 June 2025 at 16:40, Lakeside Cycling Club wrote:\n> Hello"));
        QCOMPARE(itemNamed(compose, "bodyArea")->property("cursorPosition").toInt(), 0);
        QQuickItem* holder = itemNamed(compose, "panelHolder");
        QTRY_COMPARE(holder->childItems().size(), 1);
        const QPointer<QQuickItem> panel = holder->childItems().constFirst();
        QCOMPARE(panel->size(), holder->size());
        QTRY_VERIFY(itemNamed(compose, "bodyArea")->hasActiveFocus());
        QCOMPARE(visibleWindows(), 2);
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

QUILLMATE_TEST(PreviewWindowsTest, quillmate::ViewTestApplication)

#include "PreviewWindowsTest.moc"
