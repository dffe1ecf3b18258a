#include "features/CurrentMessage.h"
#include "platform/foundation/settings/UserDefaults.h"
#include "state/AuthManager.h"
#include "support/TestProgram.h"
#include "views/ViewFixture.h"
#include "views/ViewTestApplication.h"
#include "views/login/LoginViewState.h"
#include "views/session/SessionTabsViewState.h"

#include <QTest>

using namespace quillmate;

/// The panel as a whole: its size, its tabs, its summary, and that it is shown and hidden.
class SessionTabsViewTest : public QObject
{
    Q_OBJECT

private:
    static constexpr auto toggle = Qt::ControlModifier | Qt::ShiftModifier;
    const QString quick = QStringLiteral("Quick response");
    const QString custom = QStringLiteral("Custom interactive response");

    void show() { m_fixture.show(SessionTabsViewState::makeView(currentMessage(), nullptr)); }

    ViewFixture m_fixture;

private Q_SLOTS:
    void init() { m_fixture.reset(); }

    void sizes_data()
    {
        QTest::addColumn<bool>("message");
        QTest::addColumn<QSize>("window");
        QTest::addColumn<QSize>("content");
        QTest::newRow("narrow and low") << false << QSize(300, 300) << QSize(400, 400);
        QTest::newRow("narrow and low, with a message") << true << QSize(300, 300) << QSize(400, 550);
        QTest::newRow("between") << true << QSize(450, 700) << QSize(450, 700);
        QTest::newRow("wide and high") << false << QSize(900, 1200) << QSize(500, 900);
    }

    /// Those of the sign-in screen as well.
    void sizes()
    {
        QFETCH(const bool, message);
        QFETCH(const QSize, window);
        QFETCH(const QSize, content);
        ReplyEmailManager::shared().update([message](ReplyEmail& record) {
            record.subject = message ? std::optional<std::string>("") : std::nullopt;
        });
        for (const char* screen : {"content", "sessionModalView"}) {
            m_fixture.show(screen == QByteArray("content") ? LoginViewState::makeView(*currentMessage(), [] {})
                                                           : SessionTabsViewState::makeView(currentMessage(), nullptr));
            m_fixture.shown()->setSize(window);
            const QPointF corner((window.width() - content.width()) / 2.0, (window.height() - content.height()) / 2.0);
            QCOMPARE(m_fixture.placeOf(screen), QRectF(corner, content));
            QCOMPARE(m_fixture.shown()->implicitWidth(), 400.0);
            QCOMPARE(m_fixture.shown()->implicitHeight(), message ? 550.0 : 400.0);
        }
        // Here, and not in the middle of the next case.
        QTRY_COMPARE(m_fixture.server().lines(), std::vector<std::string>{"GET /api/v1" + ViewFixture::versionCheck()});
    }

    void withoutMessage()
    {
        UserDefaults::standard().setString("summarizeResponse compose", "Not for a new message.");
        AuthManager::shared().accessToken.set("token");
        show();
        QVERIFY(!m_fixture.item("summarySection"));
        QTRY_COMPARE(m_fixture.server().lines(), std::vector<std::string>{"GET /api/v1" + ViewFixture::versionCheck()});
    }

    void summaryToTheLetter()
    {
        ViewFixture::replyTo("m1", "The content");
        const auto summary = QStringLiteral("<b>x</b> &amp; <img src='https://other.example/x.png'>\nsecond *line*");
        UserDefaults::standard().setString("summarizeResponse m1", summary.toStdString());
        show();
        auto* text = m_fixture.item("scrollableText");
        QVERIFY(text);
        QString shown;
        QVERIFY(QMetaObject::invokeMethod(text, "getText", Q_RETURN_ARG(QString, shown), Q_ARG(int, 0),
                                          Q_ARG(int, text->property("length").toInt())));
        QCOMPARE(shown.replace(QChar::ParagraphSeparator, QLatin1Char('\n')), summary);
        QCOMPARE(QAccessible::queryAccessibleInterface(text)->text(QAccessible::Name), summary);
        QVERIFY(m_fixture.accessible(QAccessible::Heading, QStringLiteral("Summary")));
    }

    void longSummaryScrolls()
    {
        ViewFixture::replyTo("m1", "The content");
        UserDefaults::standard().setString("summarizeResponse m1", std::string(20'000, 'w') + " end");
        show();
        m_fixture.shown()->setSize({400, 550});
        const auto* text = m_fixture.item("scrollableText");
        QTRY_VERIFY2(text->height() > 550, QByteArray::number(text->height()).constData());
        QVERIFY(text->width() <= 400);
        // The tabs keep a place below it.
        QTRY_VERIFY(m_fixture.placeOf("panelTabs").top() + 50 < 550);
    }

    void fallbackEditor()
    {
        ViewFixture::replyTo("m1", std::nullopt);
        UserDefaults::standard().setString("Optional(\"m1\") fallbackContent", "<i>sent</i>");
        AuthManager::shared().accessToken.set("token");
        show(); // Nothing to summarise: the editor comes at once.
        AuthManager::shared().accessToken.set(std::nullopt);
        QVERIFY(m_fixture.accessible(QAccessible::EditableText, QStringLiteral("Email content")));
        for (const char* line : {"Email content cannot be loaded!", "Please copy the content and send it manually"}) {
            QVERIFY2(m_fixture.accessible(QAccessible::StaticText, QString::fromLatin1(line)), line);
        }
        QCOMPARE(m_fixture.tabThrough("logOutButton", 5),
                 (QStringList{"Log out", "Email content", "Summarize", quick, custom}));
        m_fixture.click(m_fixture.item("fallbackInput"));
        m_fixture.press(Qt::Key_End, Qt::ControlModifier);
        m_fixture.press(Qt::Key_X);
        QCOMPARE(UserDefaults::standard().string("Optional(\"m1\") fallbackContent"),
                 std::optional<std::string>("<i>sent</i>x"));
        // Signed out: nothing can be sent, and no spinner stays.
        QVERIFY(m_fixture.pressAccessible(QAccessible::Button, QStringLiteral("Summarize")));
        QTRY_COMPARE(m_fixture.log().lines().filter(QStringLiteral("ummar")),
                     (QStringList{"Access token is null in summarize API call", "Failed to summarize."}));
        QVERIFY(m_fixture.item("fallbackInput"));
        // A summary takes no more room than it needs.
        const qreal editorHeight = m_fixture.placeOf("summarySection").height();
        UserDefaults::standard().setString("summarizeResponse m1", "One line.");
        m_fixture.takeOut();
        m_fixture.putBack();
        QTRY_VERIFY(m_fixture.placeOf("summarySection").height() < editorHeight / 2);
    }

    void shownAgain()
    {
        const auto asked = QStringLiteral("Sending request to URL:");
        show();
        QCOMPARE(m_fixture.log().take().filter(asked).size(), 1);
        m_fixture.takeOut();
        m_fixture.press(Qt::Key_D, toggle);
        QCOMPARE(m_fixture.takeKeys(), 1); // The monitor has gone.
        m_fixture.putBack();
        QVERIFY(!m_fixture.item("developerMenu"));
        m_fixture.press(Qt::Key_D, toggle);
        QCOMPARE(m_fixture.takeKeys(), 0);
        QVERIFY(m_fixture.item("developerMenu")); // Here it comes again.
        QCOMPARE(m_fixture.log().take().filter(asked).size(), 1);
        m_fixture.close();
        m_fixture.press(Qt::Key_D, toggle);
        QCOMPARE(m_fixture.takeKeys(), 1);
    }

    void keysGoToWhatIsShown()
    {
        show();
        QQuickWindow other;
        QTest::keyClick(&other, Qt::Key_D, toggle); // Another panel's window has the keyboard.
        QVERIFY(!m_fixture.item("developerMenu"));
        m_fixture.press(Qt::Key_D, toggle);
        QVERIFY(m_fixture.item("developerMenu"));
        // A tab that is left keeps no keyboard.
        m_fixture.choose(QAccessible::PageTab, custom, "mouse");
        auto* input = m_fixture.item("chatInput");
        QVERIFY(input);
        input->forceActiveFocus();
        m_fixture.item("panelTabs")->setProperty("currentIndex", 0);
        QVERIFY(!input->hasActiveFocus());
        m_fixture.press(Qt::Key_X);
        QCOMPARE(input->property("text").toString(), QString());
    }

    void tabs_data() { ViewFixture::addManners({"mouse", "Space", "Return", "arrows", "accessible action"}); }

    void tabs()
    {
        QFETCH(const QString, manner);
        show();
        const auto choose = [&](const QString& from, Qt::Key arrow, const QString& to) {
            if (manner == QLatin1String("arrows")) {
                m_fixture.accessibleItem(QAccessible::PageTab, from)->forceActiveFocus(Qt::TabFocusReason);
                m_fixture.press(arrow);
            } else {
                m_fixture.choose(QAccessible::PageTab, to, manner);
            }
            QCOMPARE(m_fixture.item("quickResponse") != nullptr, to == quick);
            QCOMPARE(m_fixture.item("customInteractiveResponse") != nullptr, to == custom);
        };
        QVERIFY(m_fixture.item("quickResponse") && !m_fixture.item("customInteractiveResponse"));
        choose(quick, Qt::Key_Right, custom);
        choose(custom, Qt::Key_Left, quick);
    }
};

QUILLMATE_TEST(SessionTabsViewTest, quillmate::ViewTestApplication)
#include "SessionTabsViewTest.moc"
