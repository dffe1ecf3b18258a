#include "features/CurrentMessage.h"
#include "platform/foundation/settings/UserDefaults.h"
#include "state/AuthManager.h"
#include "support/TestProgram.h"
#include "views/ViewFixture.h"
#include "views/ViewTestApplication.h"
#include "views/login/LoginViewState.h"

#include <QTest>

using namespace quillmate;

/// The sign-in screen, and the developer menu that it shares with the panel.
class LoginViewTest : public QObject
{
    Q_OBJECT

private:
    static constexpr auto toggle = Qt::ControlModifier | Qt::ShiftModifier;
    const QString shownLine = QStringLiteral("i enter in the login content view page");

    void show()
    {
        m_fixture.show(LoginViewState::makeView(*currentMessage(), [this] { ++m_taps; }));
        QCOMPARE(m_fixture.log().take(), QStringList{shownLine});
    }
    /// The chosen segments of the menu's picker.
    QStringList checked()
    {
        QStringList names;
        for (const char* segment : {"Dev", "Staging", "Live"}) {
            auto* found = m_fixture.accessible(QAccessible::RadioButton, QString::fromLatin1(segment));
            if (found && found->state().checked) {
                names << QString::fromLatin1(segment);
            }
        }
        return names;
    }

    ViewFixture m_fixture;
    int m_taps = 0;

private Q_SLOTS:
    void init()
    {
        m_fixture.reset();
        m_taps = 0;
    }

    void loginButton()
    {
        show();
        QCOMPARE(m_fixture.item("loginButton")->size(), QSizeF(200, 40));
        m_fixture.click(m_fixture.item("loginButton"));
        QVERIFY(m_fixture.pressAccessible(QAccessible::Button, QStringLiteral("Login")));
        QCOMPARE(m_taps, 2);
        m_fixture.click(m_fixture.item("content"));
        QCOMPARE(m_taps, 2);
    }

    void saysWhyOneSignsInAgain()
    {
        const auto text = [this] {
            return m_fixture.item("problem") ? m_fixture.item("problem")->property("text").toString() : QString();
        };
        AuthManager& manager = AuthManager::shared();
        show();
        QCOMPARE(text(), QString());
        manager.signIn("token", manager.logouts());
        manager.accessToken.set(std::nullopt); // As another process finds it.
        show();
        QVERIFY(text().startsWith("Quillmate has been started anew"));
        manager.signIn("token", manager.logouts());
        manager.endSignIn("token");
        m_fixture.log().take();
        show();
        QVERIFY(text().startsWith("The service has ended your sign-in"));
        manager.signIn("token", manager.logouts());
        manager.logout();
        m_fixture.log().take();
        show();
        QCOMPARE(text(), QString());
    }

    void keys_data()
    {
        QTest::addColumn<int>("key");
        QTest::addColumn<int>("modifiers");
        QTest::addColumn<bool>("opens");
        const auto row = [](const char* name, Qt::Key key, Qt::KeyboardModifiers modifiers, bool opens = false) {
            QTest::newRow(name) << static_cast<int>(key) << static_cast<int>(modifiers.toInt()) << opens;
        };
        row("Control-Shift-D", Qt::Key_D, toggle, true);
        row("Control-Shift-Alt-D", Qt::Key_D, toggle | Qt::AltModifier, true);
        row("D", Qt::Key_D, Qt::NoModifier);
        row("Control-D", Qt::Key_D, Qt::ControlModifier);
        row("Shift-D", Qt::Key_D, Qt::ShiftModifier);
        row("Meta-Shift-D", Qt::Key_D, Qt::MetaModifier | Qt::ShiftModifier);
        row("Control-Shift-E", Qt::Key_E, toggle);
        row("Control-Shift-F1", Qt::Key_F1, toggle);
    }

    void keys()
    {
        QFETCH(const int, key);
        QFETCH(const int, modifiers);
        QFETCH(const bool, opens);
        show();
        for (const bool first : {true, false}) {
            m_fixture.press(static_cast<Qt::Key>(key), Qt::KeyboardModifiers::fromInt(modifiers));
            QCOMPARE(m_fixture.item("developerMenu") != nullptr, opens && first);
            QCOMPARE(m_fixture.accessible(QAccessible::StaticText, DeveloperMenuState::version()) != nullptr,
                     opens && first);
            QCOMPARE(m_fixture.takeKeys(), opens ? 0 : 1); // Used up, or passed on.
        }
    }

    void picker_data() { ViewFixture::addManners({"mouse", "Space", "Return", "accessible action"}); }

    void picker()
    {
        QFETCH(const QString, manner);
        show();
        m_fixture.press(Qt::Key_D, toggle);
        const struct {
            const char* choice;
            bool other;
            const char* stored;
        } steps[] = {{"Live", false, "nothing"},
                     {"Staging", true, "staging"},
                     {"Staging", false, "staging"},
                     {"Dev", true, "dev"}};
        for (const auto& step : steps) {
            AuthManager::shared().accessToken.set("token");
            m_fixture.choose(QAccessible::RadioButton, QString::fromLatin1(step.choice), manner);
            // Another choice signs the user out; apart from that the screen is as it was.
            QCOMPARE(AuthManager::shared().accessToken.get().has_value(), !step.other);
            QCOMPARE(UserDefaults::standard().string("selectedApiEndpoint").value_or("nothing"),
                     std::string(step.stored));
            QCOMPARE(checked(), QStringList{QString::fromLatin1(step.choice)});
            QVERIFY(m_fixture.item("developerMenu") && m_fixture.item("loginButton"));
        }
    }

    void storedEndpoint()
    {
        const std::pair<const char*, const char*> pairs[] = {
            {"dev", "Dev"}, {"staging", "Staging"}, {"live", "Live"}, {"Staging", "Live"}}; // The last is unknown.
        for (const auto& [stored, shown] : pairs) {
            AuthManager::shared().accessToken.set("token");
            UserDefaults::standard().setString("selectedApiEndpoint", stored);
            show();
            m_fixture.press(Qt::Key_D, toggle);
            QCOMPARE(checked(), QStringList{QString::fromLatin1(shown)});
            QVERIFY(AuthManager::shared().accessToken.get()); // Nothing was chosen.
        }
    }

    void shownAgain()
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
};

QUILLMATE_TEST(LoginViewTest, quillmate::ViewTestApplication)
#include "LoginViewTest.moc"
