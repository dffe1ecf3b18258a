#include "platform/foundation/UserDefaults.h"
#include "state/AuthManager.h"
#include "state/ReplyEmailManager.h"
#include "views/LoginViewState.h"
#include "views/ViewFixture.h"
#include "views/ViewTestMain.h"

#include <QTest>

using namespace quillmate;

class LoginViewTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void sizes_data();
    void sizes();
    void loginButton();
    void developerMenu();
    void otherKeysPass_data();
    void otherKeysPass();
    void picker_data();
    void picker();
    void storedEndpoint_data();
    void storedEndpoint();
    void shownAgain();

private:
    void show();
    [[nodiscard]] bool isChecked(const char* segment);

    ViewFixture m_fixture;
    int m_taps = 0;
};

namespace
{

const auto shownLine = QStringLiteral("i enter in the login content view page");
constexpr auto toggle = Qt::ControlModifier | Qt::ShiftModifier;

} // namespace

void LoginViewTest::init()
{
    m_fixture.reset();
    m_taps = 0;
}

void LoginViewTest::show()
{
    m_fixture.show(LoginViewState::makeView([this] { ++m_taps; }));
    QCOMPARE(m_fixture.log().take(), QStringList{shownLine});
}

bool LoginViewTest::isChecked(const char* segment)
{
    auto* found = m_fixture.accessible(QAccessible::RadioButton, QString::fromLatin1(segment));
    return found && found->state().checked;
}

void LoginViewTest::sizes_data()
{
    QTest::addColumn<bool>("subject");
    QTest::addColumn<QSize>("window");
    QTest::addColumn<QSize>("content");
    QTest::newRow("narrow and low") << false << QSize(300, 300) << QSize(400, 400);
    QTest::newRow("narrow and low, with a message") << true << QSize(300, 300) << QSize(400, 550);
    QTest::newRow("between") << false << QSize(450, 700) << QSize(450, 700);
    QTest::newRow("between, with a message") << true << QSize(450, 560) << QSize(450, 560);
    QTest::newRow("wide and high") << true << QSize(900, 1200) << QSize(500, 900);
}

void LoginViewTest::sizes()
{
    QFETCH(const bool, subject);
    QFETCH(const QSize, window);
    QFETCH(const QSize, content);
    ReplyEmailManager::shared().update(
        [subject](ReplyEmail& record) { record.subject = subject ? std::optional<std::string>("") : std::nullopt; });
    show();
    m_fixture.shown()->setSize(window);
    QCOMPARE(m_fixture.item("content")->size().toSize(), content);
    // In the middle.
    QCOMPARE(m_fixture.item("content")->mapToItem(m_fixture.shown(), {0, 0}),
             QPointF((window.width() - content.width()) / 2.0, (window.height() - content.height()) / 2.0));
    QCOMPARE(m_fixture.shown()->implicitWidth(), 400.0);
    QCOMPARE(m_fixture.shown()->implicitHeight(), subject ? 550.0 : 400.0);
}

void LoginViewTest::loginButton()
{
    show();
    auto* button = m_fixture.item("loginButton");
    QVERIFY(button);
    QCOMPARE(button->size(), QSizeF(200, 40));
    m_fixture.click(button);
    QCOMPARE(m_taps, 1);
    button->forceActiveFocus(Qt::TabFocusReason);
    m_fixture.press(Qt::Key_Space);
    QCOMPARE(m_taps, 2);
    m_fixture.press(Qt::Key_Return);
    QCOMPARE(m_taps, 3);
    m_fixture.press(Qt::Key_Enter);
    QCOMPARE(m_taps, 4);
    QVERIFY(m_fixture.pressAccessible(QAccessible::Button, QStringLiteral("Login")));
    QCOMPARE(m_taps, 5);
    m_fixture.press(Qt::Key_A);
    m_fixture.click(m_fixture.item("content"));
    QCOMPARE(m_taps, 5);
}

void LoginViewTest::developerMenu()
{
    show();
    QVERIFY(!m_fixture.item("developerMenu"));
    QVERIFY(!m_fixture.accessible(QAccessible::RadioButton, QStringLiteral("Live")));
    m_fixture.press(Qt::Key_D, toggle);
    QVERIFY(m_fixture.item("developerMenu"));
    QVERIFY(m_fixture.accessible(QAccessible::StaticText, QStringLiteral("1.0.0")));
    m_fixture.press(Qt::Key_D, toggle | Qt::AltModifier);
    QVERIFY(!m_fixture.item("developerMenu"));
    QCOMPARE(m_fixture.takeKeys(), 0); // used up
}

void LoginViewTest::otherKeysPass_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<int>("modifiers");
    const auto row = [](const char* name, Qt::Key key, Qt::KeyboardModifiers modifiers) {
        QTest::newRow(name) << static_cast<int>(key) << static_cast<int>(modifiers.toInt());
    };
    row("D", Qt::Key_D, Qt::NoModifier);
    row("Control-D", Qt::Key_D, Qt::ControlModifier);
    row("Shift-D", Qt::Key_D, Qt::ShiftModifier);
    row("Meta-Shift-D", Qt::Key_D, Qt::MetaModifier | Qt::ShiftModifier);
    row("Control-Shift-E", Qt::Key_E, toggle);
    row("Control-Shift-F1", Qt::Key_F1, toggle);
}

void LoginViewTest::otherKeysPass()
{
    QFETCH(const int, key);
    QFETCH(const int, modifiers);
    show();
    m_fixture.press(static_cast<Qt::Key>(key), Qt::KeyboardModifiers::fromInt(modifiers));
    QVERIFY(!m_fixture.item("developerMenu"));
    QCOMPARE(m_fixture.takeKeys(), 1);
}

void LoginViewTest::picker_data()
{
    QTest::addColumn<QString>("manner");
    QTest::newRow("mouse") << "mouse";
    QTest::newRow("keyboard, Space") << "Space";
    QTest::newRow("keyboard, Return") << "Return";
    QTest::newRow("accessible action") << "action";
}

void LoginViewTest::picker()
{
    QFETCH(const QString, manner);
    AuthManager::shared().accessToken.set("token");
    show();
    m_fixture.press(Qt::Key_D, toggle);
    const auto choose = [&](const char* name) {
        const QString segment = QString::fromLatin1(name);
        auto* found = m_fixture.accessible(QAccessible::RadioButton, segment);
        QVERIFY(found);
        auto* target = qobject_cast<QQuickItem*>(found->object());
        if (manner == QLatin1String("mouse")) {
            m_fixture.click(target);
        } else if (manner == QLatin1String("action")) {
            QVERIFY(m_fixture.pressAccessible(QAccessible::RadioButton, segment));
        } else {
            target->forceActiveFocus(Qt::TabFocusReason);
            m_fixture.press(manner == QLatin1String("Space") ? Qt::Key_Space : Qt::Key_Return);
        }
    };
    QVERIFY(!isChecked("Dev") && !isChecked("Staging") && isChecked("Live"));

    const ChoiceWitness witness;
    choose("Live");
    QCOMPARE(witness.seen(), QStringList());
    QVERIFY(AuthManager::shared().accessToken.get());
    QVERIFY(!UserDefaults::standard().string("selectedApiEndpoint"));

    choose("Staging");
    QCOMPARE(witness.seen(), (QStringList{"apiEndpointChanged", "UserDidLogout"}));
    QVERIFY(!AuthManager::shared().accessToken.get());
    QCOMPARE(UserDefaults::standard().string("selectedApiEndpoint"), std::optional<std::string>("staging"));
    QVERIFY(!isChecked("Dev") && isChecked("Staging") && !isChecked("Live"));
    // Apart from the choice the screen is as it was.
    QVERIFY(m_fixture.item("developerMenu"));
    QVERIFY(m_fixture.item("loginButton"));

    choose("Staging");
    QCOMPARE(witness.seen().size(), 2);
    QVERIFY(isChecked("Staging"));
    choose("Dev");
    QCOMPARE(witness.seen().size(), 4);
    QCOMPARE(UserDefaults::standard().string("selectedApiEndpoint"), std::optional<std::string>("dev"));
    QVERIFY(isChecked("Dev") && !isChecked("Staging") && !isChecked("Live"));
}

void LoginViewTest::storedEndpoint_data()
{
    QTest::addColumn<QString>("stored");
    QTest::addColumn<QByteArray>("checked");
    QTest::newRow("dev") << "dev" << QByteArray("Dev");
    QTest::newRow("staging") << "staging" << QByteArray("Staging");
    QTest::newRow("unknown") << "Staging" << QByteArray("Live");
}

void LoginViewTest::storedEndpoint()
{
    QFETCH(const QString, stored);
    QFETCH(const QByteArray, checked);
    UserDefaults::standard().setString("selectedApiEndpoint", stored.toStdString());
    const ChoiceWitness witness;
    show();
    m_fixture.press(Qt::Key_D, toggle);
    for (const char* segment : {"Dev", "Staging", "Live"}) {
        QCOMPARE(isChecked(segment), checked == segment);
    }
    QCOMPARE(witness.seen(), QStringList());
}

void LoginViewTest::shownAgain()
{
    show();
    m_fixture.takeOut();
    m_fixture.press(Qt::Key_D, toggle);
    QCOMPARE(m_fixture.takeKeys(), 1); // The monitor has gone.
    m_fixture.putBack();
    QCOMPARE(m_fixture.log().take(), QStringList{shownLine});
    m_fixture.press(Qt::Key_D, toggle);
    QCOMPARE(m_fixture.takeKeys(), 1); // And is not there again.
    QVERIFY(!m_fixture.item("developerMenu"));
    show(); // A new screen has its own.
    m_fixture.press(Qt::Key_D, toggle);
    QVERIFY(m_fixture.item("developerMenu"));
}

int main(int argc, char** argv)
{
    return runViewTest<LoginViewTest>(argc, argv);
}
#include "LoginViewTest.moc"
