#include "platform/foundation/UserDefaults.h"
#include "state/AuthManager.h"
#include "state/ReplyEmailManager.h"
#include "state/SummarizeManager.h"
#include "views/SessionTabsViewState.h"
#include "views/ViewFixture.h"
#include "views/ViewTestMain.h"

#include <QTest>

using namespace quillmate;

/// What the panel shows of a summary.
class SummarySectionTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_fixture.reset(); }
    void withoutMessage();
    void summaryToTheLetter();
    void longSummaryScrolls();
    void spinner();
    void fallbackEditor();

private:
    void show() { m_fixture.show(SessionTabsViewState::makeView(nullptr)); }
    static void useMessage();

    ViewFixture m_fixture;
};

void SummarySectionTest::useMessage()
{
    ReplyEmailManager::shared().update([](ReplyEmail& record) {
        record = {"ana@a.example", "Plans", std::nullopt, "The content", "m1"};
    });
}

void SummarySectionTest::withoutMessage()
{
    UserDefaults::standard().setString("summarizeResponse compose", "Not for a new message.");
    AuthManager::shared().accessToken.set("token");
    show();
    QVERIFY(!m_fixture.item("summarySection"));
    QTRY_COMPARE(m_fixture.server().lines(),
                 std::vector<std::string>{"GET /api/v1/apple-version?currentVersion=1.0.0"});
}

void SummarySectionTest::summaryToTheLetter()
{
    useMessage();
    const auto summary = QStringLiteral("<b>x</b> &amp; <img src='https://other.example/x.png'>\nsecond *line*");
    UserDefaults::standard().setString("summarizeResponse m1", summary.toStdString());
    show();
    auto* text = m_fixture.item("scrollableText");
    QVERIFY(text);
    QString shown;
    QVERIFY(QMetaObject::invokeMethod(text, "getText", Q_RETURN_ARG(QString, shown), Q_ARG(int, 0),
                                      Q_ARG(int, text->property("length").toInt())));
    QCOMPARE(shown.replace(QChar::ParagraphSeparator, QLatin1Char('\n')), summary);
    auto* accessible = QAccessible::queryAccessibleInterface(text);
    QVERIFY(accessible);
    QCOMPARE(accessible->text(QAccessible::Name), summary);
    QVERIFY(m_fixture.accessible(QAccessible::Heading, QStringLiteral("Summary")));
}

void SummarySectionTest::longSummaryScrolls()
{
    useMessage();
    UserDefaults::standard().setString("summarizeResponse m1", std::string(20'000, 'w') + " end");
    show();
    m_fixture.shown()->setSize({400, 550});
    const auto* text = m_fixture.item("scrollableText");
    QTRY_VERIFY2(text->height() > 550, QByteArray::number(text->height()).constData());
    // The tabs keep a place below it.
    const auto* tab = qobject_cast<QQuickItem*>(
        m_fixture.accessible(QAccessible::PageTab, QStringLiteral("Quick response"))->object());
    QTRY_VERIFY(tab->mapToItem(m_fixture.shown(), {0, tab->height()}).y() < 550);
    QVERIFY(text->width() <= 400);
}

void SummarySectionTest::spinner()
{
    useMessage();
    AuthManager::shared().accessToken.set("token");
    m_fixture.server().reply("GET /api/v1/me", TestReply{200, "", {}, TestReply::Manner::Silence});
    show();
    QTRY_VERIFY(m_fixture.item("summarySpinner"));
    QVERIFY(m_fixture.accessible(QAccessible::Animation, QStringLiteral("Loading")));
}

void SummarySectionTest::fallbackEditor()
{
    useMessage();
    SummarizeManager::shared().requestFailed = true;
    UserDefaults::standard().setString("Optional(\"m1\") fallbackContent", "<i>sent</i>");
    show();
    QVERIFY(m_fixture.accessible(QAccessible::EditableText, QStringLiteral("Email content")));
    QVERIFY(m_fixture.accessible(QAccessible::StaticText, QStringLiteral("Email content cannot be loaded!")));
    QVERIFY(
        m_fixture.accessible(QAccessible::StaticText, QStringLiteral("Please copy the content and send it manually")));
    auto* input = m_fixture.item("fallbackInput");
    QCOMPARE(input->property("length").toInt(), 11);
    m_fixture.click(input);
    m_fixture.press(Qt::Key_End, Qt::ControlModifier);
    m_fixture.press(Qt::Key_X);
    QCOMPARE(UserDefaults::standard().string("Optional(\"m1\") fallbackContent"),
             std::optional<std::string>("<i>sent</i>x"));
    QCOMPARE(SummarizeManager::shared().fallbackSummarizeContent.get(), std::string("<i>sent</i>x"));
    // Signed out: nothing can be sent, and no spinner stays.
    m_fixture.log().take();
    QVERIFY(m_fixture.pressAccessible(QAccessible::Button, QStringLiteral("Summarize")));
    QTRY_COMPARE(m_fixture.log().lines().filter(QStringLiteral("ummar")),
                 (QStringList{"Access token is null in summarize API call", "Failed to summarize."}));
    QVERIFY(m_fixture.item("fallbackInput"));
}

int main(int argc, char** argv)
{
    return runViewTest<SummarySectionTest>(argc, argv);
}
#include "SummarySectionTest.moc"
