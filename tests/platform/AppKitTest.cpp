#include "platform/appkit/NSEvent.h"
#include "platform/appkit/NSHostingController.h"
#include "platform/appkit/NSView.h"
#include "platform/appkit/NSWorkspace.h"
#include "support/LogCapture.h"
#include "support/TestEnvironment.h"

#include <QGuiApplication>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>

using namespace quillmate;

class AppKitTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void viewsStack();
    void pinnedViewsFollow();
    void controllersLetGo();
    void hostedViews();
    void brokenViews();
    void keyMonitors();
    void keys_data();
    void keys();
    void pages();

private:
    TestEnvironment m_environment;
};

void AppKitTest::viewsStack()
{
    NSView root;
    const auto below = std::make_shared<NSView>();
    const auto above = std::make_shared<NSView>();
    root.addSubview(below);
    root.addSubview(above);
    QCOMPARE(root.item()->childItems(), (QList<QQuickItem*>{below->item(), above->item()}));
    root.addSubview(below); // again: now on top
    QCOMPARE(root.item()->childItems(), (QList<QQuickItem*>{above->item(), below->item()}));
    below->removeFromSuperview();
    below->removeFromSuperview();
    QCOMPARE(root.subviews(), std::vector{above});
    QCOMPARE(below->item()->parentItem(), nullptr);
}

void AppKitTest::pinnedViewsFollow()
{
    NSView root;
    root.item()->setSize({400, 300});
    auto view = std::make_shared<NSView>();
    view->item()->setImplicitWidth(410);
    root.addSubview(view);
    view->pinEdgesToSuperview();
    QCOMPARE(view->item()->size(), QSizeF(400, 300));
    QCOMPARE(root.item()->implicitWidth(), 410.0);
    root.item()->setSize({500, 600});
    QCOMPARE(view->item()->size(), QSizeF(500, 600));
    view->removeFromSuperview();
    root.item()->setSize({100, 100});
    QCOMPARE(view->item()->size(), QSizeF(500, 600));
    view.reset();
    root.item()->setSize({50, 50});

    // A host that takes the size which the outer view asks for.
    NSView outer;
    QObject::connect(outer.item(), &QQuickItem::implicitHeightChanged, outer.item(), [&outer] {
        outer.item()->setSize({outer.item()->implicitWidth(), outer.item()->implicitHeight()});
    });
    const auto inner = std::make_shared<NSView>();
    inner->item()->setImplicitWidth(400);
    inner->item()->setImplicitHeight(550);
    outer.addSubview(inner);
    inner->pinEdgesToSuperview();
    QCOMPARE(inner->item()->size(), QSizeF(400, 550));
}

void AppKitTest::controllersLetGo()
{
    NSViewController parent;
    auto child = std::make_shared<NSViewController>();
    parent.addChild(child);
    const std::weak_ptr<NSViewController> weak = child;
    child.reset();
    QVERIFY(!weak.expired());
    parent.children().back()->removeFromParent();
    QVERIFY(weak.expired());
}

void AppKitTest::hostedViews()
{
    const QUrl source = QUrl::fromLocalFile(TestEnvironment::path(QStringLiteral("Hosted.qml")));
    QFile file(source.toLocalFile());
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("import QtQuick\nItem { required property string word; objectName: word }\n");
    file.close();

    QStringList events;
    auto state = std::make_shared<int>(1);
    const std::weak_ptr<int> weakState = state;
    QQuickWindow window;
    std::shared_ptr<NSView> view;
    {
        NSHostingController host({source,
                                  {{"word", "given"}},
                                  std::move(state),
                                  [&] { events.append("appear"); },
                                  [&] { events.append("disappear"); }});
        view = host.view();
        QCOMPARE(view->item()->objectName(), QStringLiteral("given"));
        QCOMPARE(events, QStringList());
        view->item()->setParentItem(window.contentItem());
        view->item()->setParentItem(nullptr);
        view->item()->setParentItem(window.contentItem());
        QCOMPARE(events, (QStringList{"appear", "disappear", "appear"}));
    }
    // The controller is gone: hidden for good, but what the view reads is there as long as the view.
    QCOMPARE(events.size(), 4);
    QVERIFY(!weakState.expired());
    view.reset();
    QVERIFY(weakState.expired());
}

void AppKitTest::brokenViews()
{
    const LogCapture log;
    NSHostingController host({QUrl(QStringLiteral("qrc:/missing.qml")), {}, nullptr, nullptr, nullptr});
    QVERIFY(host.view()->item());
    QCOMPARE(log.lines().size(), 1);
    QVERIFY(log.lines().front().contains(QLatin1String("missing.qml")));
}

void AppKitTest::keyMonitors()
{
    QQuickWindow window;
    window.show();
    QStringList asked;
    std::shared_ptr<NSEvent::Monitor> older;
    std::shared_ptr<NSEvent::Monitor> newer;
    older = NSEvent::addLocalMonitorForEvents(NSEvent::keyDownMask, [&](const NSEvent&) {
        asked.append("older");
        return NSEvent::Verdict::PassOn;
    });
    newer = NSEvent::addLocalMonitorForEvents(NSEvent::keyDownMask, [&](const NSEvent& event) {
        asked.append("newer");
        NSEvent::removeMonitor(older); // from within
        return event.charactersIgnoringModifiers == "x" ? NSEvent::Verdict::Swallow : NSEvent::Verdict::PassOn;
    });
    QVERIFY(older && newer);
    QVERIFY(!NSEvent::addLocalMonitorForEvents(2, [](const NSEvent&) { return NSEvent::Verdict::PassOn; }));

    struct Listener : QQuickItem {
        QString typed;
        void keyPressEvent(QKeyEvent* event) override { typed += event->text(); }
    };
    Listener listener;
    listener.setParentItem(window.contentItem());
    listener.setFocus(true);
    listener.forceActiveFocus();
    window.requestActivate();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    QTest::keyClick(&window, Qt::Key_X);
    QTest::keyClick(&window, Qt::Key_Y);
    QCOMPARE(asked, (QStringList{"newer", "newer"}));
    QCOMPARE(listener.typed, QStringLiteral("y"));
    NSEvent::removeMonitor(newer);
    NSEvent::removeMonitor(newer);
    QTest::keyClick(&window, Qt::Key_X);
    QCOMPARE(listener.typed, QStringLiteral("yx"));
}

void AppKitTest::keys_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
    QTest::addColumn<uint>("flags");
    QTest::addColumn<QString>("characters"); // "-" for none
    QTest::newRow("d") << int(Qt::Key_D) << Qt::KeyboardModifiers() << 0U << "d";
    QTest::newRow("shift") << int(Qt::Key_D) << Qt::KeyboardModifiers(Qt::ShiftModifier) << 0x20000U << "D";
    QTest::newRow("control is command") << int(Qt::Key_D) << (Qt::ControlModifier | Qt::ShiftModifier) << 0x120000U
                                        << "D";
    QTest::newRow("alt is option") << int(Qt::Key_1) << Qt::KeyboardModifiers(Qt::AltModifier) << 0x80000U << "1";
    QTest::newRow("meta is control") << int(Qt::Key_D) << Qt::KeyboardModifiers(Qt::MetaModifier) << 0x40000U << "d";
    QTest::newRow("a key without a character") << int(Qt::Key_F1) << Qt::KeyboardModifiers() << 0U << "-";
}

void AppKitTest::keys()
{
    QFETCH(const int, key);
    QFETCH(const Qt::KeyboardModifiers, modifiers);
    QFETCH(const uint, flags);
    QFETCH(const QString, characters);
    QQuickWindow window;
    window.show();
    QList<NSEvent> events;
    const auto monitor = NSEvent::addLocalMonitorForEvents(NSEvent::keyDownMask, [&](const NSEvent& event) {
        events.append(event);
        return NSEvent::Verdict::PassOn;
    });
    QTest::keyClick(&window, static_cast<Qt::Key>(key), modifiers);
    NSEvent::removeMonitor(monitor);
    // The modifiers were pressed first.
    QVERIFY(!events.isEmpty());
    QCOMPARE(events.back().modifierFlags, flags);
    QCOMPARE(QString::fromStdString(events.back().charactersIgnoringModifiers.value_or("-")), characters);
}

void AppKitTest::pages()
{
    const LogCapture log;
    QStringList opened;
    NSWorkspace::shared().setOpener([&](const URL& url) {
        opened.append(QString::fromStdString(url.absoluteString()));
        return true;
    });
    QVERIFY(NSWorkspace::shared().open(URL::parse("https://a.example/x").value()));
    QVERIFY(NSWorkspace::shared().open(URL::parse("HTTP://127.0.0.1:1/").value()));
    for (const char* other : {"file:///bin/sh", "mailto:a@b.example", "/x", "https:nothing"}) {
        QVERIFY(!NSWorkspace::shared().open(URL::parse(other).value()));
    }
    NSWorkspace::shared().setOpener(nullptr);
    QCOMPARE(opened, (QStringList{"https://a.example/x", "HTTP://127.0.0.1:1/"}));
    QCOMPARE(log.lines().size(), 4);
}

QTEST_MAIN(AppKitTest)
#include "AppKitTest.moc"
