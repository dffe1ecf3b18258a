#include "platform/appkit/NSEvent.h"
#include "platform/appkit/NSHostingController.h"
#include "platform/appkit/NSPasteboard.h"
#include "platform/appkit/NSView.h"
#include "platform/appkit/NSWorkspace.h"
#include "support/LogCapture.h"
#include "support/TestEnvironment.h"
#include "support/TestProgram.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>
#include <QQuickItem>
#include <QQuickWindow>

using namespace quillmate;

class AppKitTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void viewsStack()
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

    void pinnedViewsFollow()
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

    void controllersLetGo()
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

    void hostedViews()
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

    void brokenViews()
    {
        const LogCapture log;
        NSHostingController host({QUrl(QStringLiteral("qrc:/missing.qml")), {}, nullptr, nullptr, nullptr});
        QVERIFY(host.view()->item());
        QCOMPARE(log.lines().size(), 1);
        QVERIFY(log.lines().front().contains(QLatin1String("missing.qml")));
    }

    void keyMonitors()
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

    void keys()
    {
        const struct {
            Qt::Key key;
            Qt::KeyboardModifiers modifiers;
            unsigned flags;
            const char* characters; // "-" for none
        } rows[] = {
            {Qt::Key_D, {}, 0, "d"},
            {Qt::Key_D, Qt::ShiftModifier, 0x20000, "D"},
            {Qt::Key_D, Qt::ControlModifier | Qt::ShiftModifier, 0x120000, "D"}, // Control is command,
            {Qt::Key_1, Qt::AltModifier, 0x80000, "1"},                          // Alt is option,
            {Qt::Key_D, Qt::MetaModifier, 0x40000, "d"},                         // and Meta is control.
            {Qt::Key_F1, {}, 0, "-"},
        };
        QQuickWindow window;
        window.show();
        for (const auto& row : rows) {
            QList<NSEvent> events;
            const auto monitor = NSEvent::addLocalMonitorForEvents(NSEvent::keyDownMask, [&](const NSEvent& event) {
                events.append(event);
                return NSEvent::Verdict::PassOn;
            });
            QTest::keyClick(&window, row.key, row.modifiers);
            NSEvent::removeMonitor(monitor);
            QVERIFY(!events.isEmpty()); // The modifiers were pressed first.
            QCOMPARE(events.back().modifierFlags, row.flags);
            QCOMPARE(events.back().charactersIgnoringModifiers.value_or("-"), std::string(row.characters));
        }
    }

    void pasteboard()
    {
        const QClipboard* clipboard = QGuiApplication::clipboard();
        auto& pasteboard = NSPasteboard::general();
        const auto copy = [&pasteboard](const std::string& text) {
            pasteboard.declareTypes({NSPasteboard::PasteboardType::String});
            return pasteboard.setString(text, NSPasteboard::PasteboardType::String);
        };
        for (const std::string text : {"<b>Yes.</b>\r\n é 🪶 ", ""}) {
            auto earlier = std::make_unique<QMimeData>();
            earlier->setHtml("<i>earlier</i>");
            QGuiApplication::clipboard()->setMimeData(earlier.release());
            QVERIFY(copy(text));
            QCOMPARE(clipboard->text().toStdString(), text);
            QCOMPARE(clipboard->mimeData()->formats(), QStringList{"text/plain"});
        }
        QVERIFY(!copy("caf\xe9"));
        QCOMPARE(clipboard->text(), QString());
    }

    void pages()
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

private:
    TestEnvironment m_environment;
};

QUILLMATE_TEST(AppKitTest, QGuiApplication)
#include "AppKitTest.moc"
