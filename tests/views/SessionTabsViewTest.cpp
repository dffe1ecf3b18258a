#include "platform/foundation/MainSchedule.h"
#include "platform/foundation/UserDefaults.h"
#include "state/AuthManager.h"
#include "state/ReplyEmailManager.h"
#include "state/SummarizeManager.h"
#include "views/SessionTabsViewState.h"
#include "views/ViewFixture.h"
#include "views/ViewTestMain.h"

#include <QRegularExpression>
#include <QTest>

using namespace quillmate;

class SessionTabsViewTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void sizes_data();
    void sizes();
    void logOut_data();
    void logOut();
    void developerMenu();
    void picker();
    void shownAgain();
    void tabs_data();
    void tabs();
    void tabOrder();

private:
    void show();
    void useMessage();

    ViewFixture m_fixture;
};

namespace
{

constexpr auto toggle = Qt::ControlModifier | Qt::ShiftModifier;
const auto quick = QStringLiteral("Quick response");
const auto custom = QStringLiteral("Custom interactive response");

} // namespace

void SessionTabsViewTest::init()
{
    m_fixture.reset();
}

void SessionTabsViewTest::show()
{
    m_fixture.show(SessionTabsViewState::makeView(nullptr));
}

void SessionTabsViewTest::useMessage()
{
    ReplyEmailManager::shared().update([](ReplyEmail& record) {
        record = {"ana@a.example", "Plans", std::nullopt, "The content", "m1"};
    });
}

void SessionTabsViewTest::sizes_data()
{
    QTest::addColumn<bool>("message");
    QTest::addColumn<QSize>("window");
    QTest::addColumn<QSize>("panel");
    QTest::newRow("narrow and low") << false << QSize(300, 300) << QSize(400, 400);
    QTest::newRow("narrow and low, with a message") << true << QSize(300, 300) << QSize(400, 550);
    QTest::newRow("between") << true << QSize(450, 700) << QSize(450, 700);
    QTest::newRow("wide and high") << false << QSize(900, 1200) << QSize(500, 900);
}

void SessionTabsViewTest::sizes()
{
    QFETCH(const bool, message);
    QFETCH(const QSize, window);
    QFETCH(const QSize, panel);
    if (message) {
        useMessage();
    }
    show();
    m_fixture.shown()->setSize(window);
    const auto* body = m_fixture.item("sessionModalView");
    QVERIFY(body);
    QCOMPARE(body->size().toSize(), panel);
    QCOMPARE(body->mapToItem(m_fixture.shown(), {0, 0}),
             QPointF((window.width() - panel.width()) / 2.0, (window.height() - panel.height()) / 2.0));
    QCOMPARE(m_fixture.shown()->implicitWidth(), 400.0);
    QCOMPARE(m_fixture.shown()->implicitHeight(), message ? 550.0 : 400.0);
}

void SessionTabsViewTest::logOut_data()
{
    QTest::addColumn<QString>("manner");
    QTest::newRow("mouse") << "mouse";
    QTest::newRow("keyboard") << "keyboard";
    QTest::newRow("accessible action") << "action";
}

void SessionTabsViewTest::logOut()
{
    QFETCH(const QString, manner);
    AuthManager::shared().accessToken.set("token");
    UserDefaults::standard().setString("generateResponse m1", "x");
    show();
    m_fixture.log().take();
    QVERIFY(m_fixture.accessible(QAccessible::Button, QStringLiteral("Log out")));
    auto* button = m_fixture.item("logOutButton");
    if (manner == QLatin1String("mouse")) {
        m_fixture.click(button);
    } else if (manner == QLatin1String("keyboard")) {
        button->forceActiveFocus(Qt::TabFocusReason);
        m_fixture.press(Qt::Key_Return);
    } else {
        QVERIFY(m_fixture.pressAccessible(QAccessible::Button, QStringLiteral("Log out")));
    }
    // The version's answer comes when it comes.
    QCOMPARE(m_fixture.log().take().filter(QRegularExpression(QStringLiteral("clicked|cleared"))),
             (QStringList{"Logout button clicked", "UserDefaults cleared", "URLSession cache cleared"}));
    QVERIFY(!AuthManager::shared().accessToken.get());
    QVERIFY(UserDefaults::standard().dictionaryRepresentation().empty());
}

void SessionTabsViewTest::developerMenu()
{
    show();
    QVERIFY(!m_fixture.item("developerMenu"));
    for (const Qt::KeyboardModifiers passing : {Qt::KeyboardModifiers(), Qt::KeyboardModifiers(Qt::ControlModifier),
                                                Qt::KeyboardModifiers(Qt::ShiftModifier)}) {
        m_fixture.press(Qt::Key_D, passing);
        QVERIFY(!m_fixture.item("developerMenu"));
        QCOMPARE(m_fixture.takeKeys(), 1);
    }
    m_fixture.press(Qt::Key_D, toggle);
    QVERIFY(m_fixture.item("developerMenu"));
    QVERIFY(m_fixture.accessible(QAccessible::StaticText, QStringLiteral("1.0.0")));
    m_fixture.press(Qt::Key_D, toggle | Qt::AltModifier);
    QVERIFY(!m_fixture.item("developerMenu"));
    QCOMPARE(m_fixture.takeKeys(), 0);
}

void SessionTabsViewTest::picker()
{
    AuthManager::shared().accessToken.set("token");
    show();
    m_fixture.press(Qt::Key_D, toggle);
    const ChoiceWitness witness;
    QVERIFY(m_fixture.pressAccessible(QAccessible::RadioButton, QStringLiteral("Live")));
    QCOMPARE(witness.seen(), QStringList());
    QVERIFY(m_fixture.pressAccessible(QAccessible::RadioButton, QStringLiteral("Staging")));
    QCOMPARE(witness.seen(), (QStringList{"apiEndpointChanged", "UserDidLogout"}));
    QCOMPARE(UserDefaults::standard().string("selectedApiEndpoint"), std::optional<std::string>("staging"));
    QVERIFY(!AuthManager::shared().accessToken.get());
}

void SessionTabsViewTest::shownAgain()
{
    const auto asked = QStringLiteral("Sending request to URL:");
    show();
    QCOMPARE(m_fixture.log().take().filter(asked).size(), 1);
    m_fixture.takeOut();
    m_fixture.press(Qt::Key_D, toggle);
    QCOMPARE(m_fixture.takeKeys(), 1); // The monitor has gone.
    UserDefaults::standard().setString("summarizeResponse compose", "Stored meanwhile.");
    m_fixture.putBack();
    m_fixture.press(Qt::Key_D, toggle);
    QVERIFY(m_fixture.item("developerMenu")); // Here it comes again.
    QCOMPARE(m_fixture.log().take().filter(asked).size(), 1);
    m_fixture.close();
    m_fixture.press(Qt::Key_D, toggle);
    QCOMPARE(m_fixture.takeKeys(), 1);
}

void SessionTabsViewTest::tabs_data()
{
    QTest::addColumn<QString>("manner");
    for (const char* manner : {"mouse", "Space", "Return", "arrows", "accessible action"}) {
        QTest::newRow(manner) << QString::fromLatin1(manner);
    }
}

void SessionTabsViewTest::tabs()
{
    QFETCH(const QString, manner);
    show();
    const auto choose = [&](const QString& name, Qt::Key arrow) {
        auto* tab = m_fixture.accessible(QAccessible::PageTab, name);
        QVERIFY(tab);
        auto* target = qobject_cast<QQuickItem*>(tab->object());
        if (manner == QLatin1String("mouse")) {
            m_fixture.click(target);
        } else if (manner == QLatin1String("accessible action")) {
            QVERIFY(m_fixture.pressAccessible(QAccessible::PageTab, name));
        } else if (manner == QLatin1String("arrows")) {
            m_fixture.press(arrow);
        } else {
            target->forceActiveFocus(Qt::TabFocusReason);
            m_fixture.press(manner == QLatin1String("Space") ? Qt::Key_Space : Qt::Key_Return);
        }
    };
    QVERIFY(m_fixture.item("quickResponse"));
    QVERIFY(!m_fixture.item("customInteractiveResponse"));
    if (manner == QLatin1String("arrows")) {
        auto* first = m_fixture.accessible(QAccessible::PageTab, quick);
        qobject_cast<QQuickItem*>(first->object())->forceActiveFocus(Qt::TabFocusReason);
    }
    choose(custom, Qt::Key_Right);
    QVERIFY(!m_fixture.item("quickResponse"));
    QVERIFY(m_fixture.item("customInteractiveResponse"));
    choose(quick, Qt::Key_Left);
    QVERIFY(m_fixture.item("quickResponse"));
    QVERIFY(!m_fixture.item("customInteractiveResponse"));
}

void SessionTabsViewTest::tabOrder()
{
    useMessage();
    SummarizeManager::shared().requestFailed = true;
    show();
    QTRY_VERIFY(m_fixture.item("fallbackInput"));
    m_fixture.item("logOutButton")->forceActiveFocus(Qt::TabFocusReason);
    QStringList visited;
    for (int i = 0; i < 5; ++i) {
        const auto* focused = QAccessible::queryAccessibleInterface(m_fixture.window().activeFocusItem());
        visited << focused->text(QAccessible::Name);
        m_fixture.press(Qt::Key_Tab);
    }
    QCOMPARE(visited, (QStringList{"Log out", "Email content", "Summarize", quick, custom}));
}

int main(int argc, char** argv)
{
    return runViewTest<SessionTabsViewTest>(argc, argv);
}
#include "SessionTabsViewTest.moc"
