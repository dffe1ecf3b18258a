#include "platform/appkit/NSAppearance.h"
#include "platform/appkit/NSFont.h"
#include "platform/appkit/NSWorkspace.h"
#include "platform/foundation/MainOwned.h"
#include "platform/foundation/MainSchedule.h"
#include "platform/foundation/UserDefaults.h"
#include "state/AuthManager.h"
#include "state/IncommingUpdatesManager.h"
#include "state/ReplyEmailManager.h"
#include "views/BlurredPicture.h"
#include "views/HostedViewOf.h"
#include "views/SessionTabsViewState.h"
#include "views/ViewFixture.h"
#include "views/ViewTestMain.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QJSValue>
#include <QMimeData>
#include <QSignalSpy>
#include <QTest>

#include <cmath>

using namespace quillmate;

/// What lies over the panel and its tabs.
class PanelOverlaysTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void replySection();
    void keyboardAfterTheFirstReply();
    void contrast_data();
    void contrast();
    void toast();
    void toastIsAnAlert();
    void loading();
    void copyNotice();
    void updateNotice();
    void noticeIsOutOfReachBelow();
    void noticeChoices_data();
    void noticeChoices();
    void pictureFollowsThePanel();
    void blur();
    void largeText();

private:
    void show();
    [[nodiscard]] ButtonStateManager& buttons() { return m_state->buttonStateManager(); }

    ViewFixture m_fixture;
    std::shared_ptr<SessionTabsViewState> m_state;
};

void PanelOverlaysTest::init()
{
    m_state.reset();
    m_fixture.reset();
    // What a panel asks for as it appears stays unanswered: an answer would take the notice away.
    m_fixture.server().reset();
    m_fixture.server().reply("GET /api/v1/apple-version?currentVersion=1.0.0",
                             TestReply{200, {}, {}, TestReply::Manner::Silence});
    IncommingUpdatesManager::shared().setIncommingUpdatesAvailable(false);
    IncommingUpdatesManager::shared().updateUrl.set(std::nullopt);
    ReplyEmailManager::shared().update([](ReplyEmail& record) {
        record = {"ana@a.example", "Plans", std::nullopt, "The content", "m1"};
    });
}

void PanelOverlaysTest::show()
{
    m_state = makeMainOwned<SessionTabsViewState>(nullptr);
    m_fixture.show(hostedViewOf(QStringLiteral("SessionTabsView"), m_state));
}

void PanelOverlaysTest::replySection()
{
    show();
    QVERIFY(m_fixture.item("generateButton"));
    QVERIFY(!m_fixture.item("replyText"));
    // A reply without the flag is none: one was never generated here.
    buttons().setGenerateResponse("A <b>reply</b>");
    QVERIFY(m_fixture.item("generateButton"));
    UserDefaults::standard().setBoolean("m1_generateResponse", true);
    buttons().updateSection();
    QVERIFY(!m_fixture.item("generateButton"));
    // About as high on both tabs: a panel must not begin to scroll because of the tab.
    auto* tabs = m_fixture.item("panelTabs");
    const double height = tabs->property("minimumHeight").toDouble();
    tabs->setProperty("currentIndex", 1);
    QVERIFY(std::abs(tabs->property("minimumHeight").toDouble() - height) < 40);
    tabs->setProperty("currentIndex", 0);
    QCOMPARE(m_fixture.item("replyText")->property("text").toString(), QStringLiteral("A <b>reply</b>"));
    QVERIFY(m_fixture.accessible(QAccessible::Button, QStringLiteral("Regenerate response")));
    QVERIFY(m_fixture.accessible(QAccessible::StaticText,
                                 QStringLiteral("Regenerating a response will use additional tokens")));
    // In order, as the keyboard reaches them.
    m_fixture.item("regenerateButton")->forceActiveFocus(Qt::TabFocusReason);
    QStringList visited;
    for (int i = 0; i < 4; ++i) {
        visited << QAccessible::queryAccessibleInterface(m_fixture.window().activeFocusItem())->text(QAccessible::Name);
        m_fixture.press(Qt::Key_Tab);
    }
    QCOMPARE(visited,
             (QStringList{"Regenerate response", "A <b>reply</b>", "Submit to train AI", "Copy to clipboard"}));
    buttons().setGenerateResponse(std::nullopt);
    QVERIFY(m_fixture.item("generateButton"));
}

void PanelOverlaysTest::keyboardAfterTheFirstReply()
{
    show();
    m_fixture.item("generateButton")->forceActiveFocus(Qt::TabFocusReason);
    UserDefaults::standard().setBoolean("m1_generateResponse", true);
    buttons().setGenerateResponse("Dear Ana");
    QVERIFY(m_fixture.item("regenerateButton")->hasActiveFocus());
    // A hidden control that holds the keyboard does nothing.
    auto* hidden = m_fixture.anyItem("generateButton");
    hidden->forceActiveFocus(Qt::TabFocusReason);
    m_fixture.log().take();
    m_fixture.press(Qt::Key_Return);
    QCOMPARE(m_fixture.log().take(), QStringList());
}

void PanelOverlaysTest::contrast_data()
{
    QTest::addColumn<bool>("dark");
    QTest::newRow("light") << false;
    QTest::newRow("dark") << true;
}

void PanelOverlaysTest::contrast()
{
    QFETCH(const bool, dark);
    NSAppearance::shared().setDark(dark);
    m_fixture.showText(
        "Item { function over(top: color, below: color): color {"
        " return Qt.tint(below, top); }"
        " property var pairs: [[Theme.primary, Theme.windowBackground], [Theme.primary, Theme.controlBackground],"
        " [Theme.secondary, Theme.windowBackground], [Theme.secondary, Theme.hover], [Theme.primary, Theme.raised],"
        " [Theme.noticeSecondary, over(Theme.notice, Theme.windowBackground)],"
        " [Theme.error, Theme.windowBackground], [Theme.accentText, Theme.windowBackground],"
        " [\"white\", Theme.blue], [\"white\", Theme.indigo], [\"white\", Theme.accent],"
        " [\"white\", Theme.userBubble], [Theme.primary, Theme.selection]] }");
    const auto luminance = [](const QColor& color) { // WCAG 2.1
        const auto linear = [](double value) {
            return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
        };
        return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
    };
    const auto pairs = m_fixture.shown()->property("pairs").value<QJSValue>().toVariant().toList();
    QCOMPARE(pairs.size(), 13);
    for (qsizetype i = 0; i < pairs.size(); ++i) {
        const double one = luminance(pairs[i].toList()[0].value<QColor>());
        const double two = luminance(pairs[i].toList()[1].value<QColor>());
        const double ratio = (std::max(one, two) + 0.05) / (std::min(one, two) + 0.05);
        QVERIFY2(ratio >= 4.5, qPrintable(QStringLiteral("pair %1: %2").arg(i).arg(ratio)));
    }
    NSAppearance::shared().setDark(false);
}

void PanelOverlaysTest::toast()
{
    const ManualTime time;
    show();
    QVERIFY(!m_fixture.item("toast"));
    buttons().announce("One");
    QVERIFY(m_fixture.item("toast"));
    ManualTime::advance(4.0);
    buttons().announce("Two"); // Does not start the time again.
    QCOMPARE(ManualTime::pendingDelays(), std::vector<double>{1.0});
    ManualTime::advance(1.0);
    QVERIFY(!buttons().showToast());
    QTRY_VERIFY(!m_fixture.item("toast"));
    buttons().announce("Three");
    QCOMPARE(ManualTime::pendingDelays(), std::vector<double>{5.0});
    // The panel goes before its toast does.
    m_fixture.close();
    m_state.reset();
    ManualTime::advance(5.0);
}

void PanelOverlaysTest::toastIsAnAlert()
{
    const ManualTime time;
    show();
    buttons().announce("Something happened");
    QVERIFY(m_fixture.accessible(QAccessible::AlertMessage, QStringLiteral("Something happened")));
}

void PanelOverlaysTest::loading()
{
    show();
    QVERIFY(!m_fixture.item("loadingOverlay"));
    buttons().setGenerateResponseLoading(true);
    QVERIFY(m_fixture.item("loadingOverlay"));
    QVERIFY(m_fixture.accessible(QAccessible::Animation, QStringLiteral("Loading")));
    buttons().setGenerateResponseLoading(false);
    QVERIFY(!m_fixture.item("loadingOverlay"));
    QVERIFY(!m_fixture.accessible(QAccessible::Animation, QStringLiteral("Loading")));
}

void PanelOverlaysTest::copyNotice()
{
    const ManualTime time;
    UserDefaults::standard().setBoolean("m1_generateResponse", true);
    UserDefaults::standard().setString("generateResponse m1", "Dear Ana");
    QGuiApplication::clipboard()->setText(QStringLiteral("before"));
    show();
    m_fixture.click(m_fixture.item("copyButton"));
    QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("Dear Ana"));
    QCOMPARE(QGuiApplication::clipboard()->mimeData()->formats(), QStringList{QStringLiteral("text/plain")});
    QVERIFY(m_fixture.item("tooltip"));
    QTRY_VERIFY(m_fixture.accessible(QAccessible::ToolTip, QStringLiteral("Text copied to clipboard!")));
    ManualTime::advance(1.9);
    QVERIFY(m_state->modal()->reply()->showTooltip());
    ManualTime::advance(0.1);
    QVERIFY(!m_state->modal()->reply()->showTooltip());
    QTRY_VERIFY(!m_fixture.item("tooltip"));
}

void PanelOverlaysTest::updateNotice()
{
    show();
    QVERIFY(!m_fixture.item("updateModalView"));
    IncommingUpdatesManager::shared().setIncommingUpdatesAvailable(true);
    QVERIFY(m_fixture.item("updateModalView"));
    auto* picture = m_fixture.item("blurredPanel");
    QCOMPARE(picture->opacity(), 0.4);
    QCOMPARE(picture->property("blurRadius").toDouble(), 3.0);
    QTRY_VERIFY(!qobject_cast<BlurredPicture*>(picture)->picture().isNull());
    IncommingUpdatesManager::shared().setIncommingUpdatesAvailable(false);
    QVERIFY(!m_fixture.item("blurredPanel"));
    QTRY_VERIFY(!m_fixture.item("updateModalView"));
    m_fixture.close();
    m_state.reset();
    IncommingUpdatesManager::shared().setIncommingUpdatesAvailable(true);
    show(); // A new panel has it at once.
    QVERIFY(m_fixture.item("updateModalView"));
}

void PanelOverlaysTest::noticeIsOutOfReachBelow()
{
    show();
    auto* generate = m_fixture.item("generateButton");
    const QPoint place = generate->mapToScene({generate->width() / 2, generate->height() / 2}).toPoint();
    generate->forceActiveFocus(Qt::TabFocusReason);
    IncommingUpdatesManager::shared().setIncommingUpdatesAvailable(true);
    QTest::mouseClick(&m_fixture.window(), Qt::LeftButton, Qt::NoModifier, place);
    QVERIFY(!buttons().isGenerateResponseLoading());
    m_fixture.press(Qt::Key_Return);
    QVERIFY(!buttons().isGenerateResponseLoading());
    m_fixture.press(Qt::Key_Space);
    QVERIFY(!buttons().isGenerateResponseLoading());
    std::ignore = m_fixture.pressAccessible(QAccessible::Button, QStringLiteral("Generate response"));
    QVERIFY(!buttons().isGenerateResponseLoading());
    // The keyboard walks through the notice alone.
    m_fixture.item("remindMeLaterButton")->forceActiveFocus(Qt::TabFocusReason);
    QStringList visited;
    for (int i = 0; i < 4; ++i) {
        visited << QAccessible::queryAccessibleInterface(m_fixture.window().activeFocusItem())->text(QAccessible::Name);
        m_fixture.press(Qt::Key_Tab);
    }
    QCOMPARE(visited, (QStringList{"Remind me later", "Update now", "Log out", "Remind me later"}));
    IncommingUpdatesManager::shared().setIncommingUpdatesAvailable(false);
    QVERIFY(m_fixture.pressAccessible(QAccessible::Button, QStringLiteral("Generate response")));
    QVERIFY(m_fixture.log().lines().contains(QStringLiteral("Access token is null in generate response API call")));
}

void PanelOverlaysTest::noticeChoices_data()
{
    QTest::addColumn<QString>("link"); // null: none
    QTest::addColumn<QStringList>("opened");
    const auto page = QStringLiteral("https://quillmate.example/download");
    QTest::newRow("a link") << page << QStringList{page};
    QTest::newRow("no link") << QString() << QStringList();
    QTest::newRow("not a URL") << "http://[" << QStringList();
    QTest::newRow("not a page") << "file:///etc/passwd" << QStringList();
}

void PanelOverlaysTest::noticeChoices()
{
    QFETCH(const QString, link);
    QFETCH(const QStringList, opened);
    QStringList seen;
    NSWorkspace::shared().setOpener([&seen](const URL& url) {
        seen << QString::fromStdString(url.absoluteString());
        return true;
    });
    show();
    if (!link.isNull()) {
        IncommingUpdatesManager::shared().updateUrl.set(link.toStdString());
    }
    IncommingUpdatesManager::shared().setIncommingUpdatesAvailable(true);
    m_fixture.log().take();
    m_fixture.click(m_fixture.item("updateNowButton"));
    NSWorkspace::shared().setOpener(nullptr);
    QCOMPARE(seen, opened);
    QVERIFY(m_fixture.log().lines().contains(QStringLiteral("Update now clicked")));
    QVERIFY(IncommingUpdatesManager::shared().incommingUpdatesAvailable());
    QVERIFY(m_fixture.pressAccessible(QAccessible::Button, QStringLiteral("Remind me later")));
    QVERIFY(m_fixture.log().lines().contains(QStringLiteral("Remind me later clicked")));
    QVERIFY(!IncommingUpdatesManager::shared().incommingUpdatesAvailable());
    QVERIFY(m_fixture.item("sessionModalView")->isEnabled());
    QCOMPARE(m_fixture.item("sessionModalView")->x(), 0.0);
}

void PanelOverlaysTest::pictureFollowsThePanel()
{
    show();
    IncommingUpdatesManager::shared().setIncommingUpdatesAvailable(true);
    auto* picture = qobject_cast<BlurredPicture*>(m_fixture.item("blurredPanel"));
    QTRY_VERIFY(!picture->picture().isNull());
    const QImage before = picture->picture();
    m_state->summarizeStateManager().setSummarizeResponse("A summary that has come meanwhile.");
    QTRY_VERIFY(picture->picture() != before);
    // Once it shows what is, nothing is drawn any more.
    QSignalSpy changes(picture, &BlurredPicture::pictureChanged);
    QSignalSpy frames(&m_fixture.window(), &QQuickWindow::frameSwapped);
    QTRY_VERIFY(!frames.wait(600));
    QVERIFY(!frames.wait(600));
}

void PanelOverlaysTest::blur()
{
    QImage picture(41, 41, QImage::Format_ARGB32_Premultiplied);
    picture.fill(Qt::transparent);
    picture.setPixelColor(20, 20, Qt::white);
    QCOMPARE(blurred(picture, 0), picture);
    for (int y = 15; y < 26; ++y) {
        for (int x = 15; x < 26; ++x) {
            picture.setPixelColor(x, y, Qt::white);
        }
    }
    const QImage soft = blurred(picture, 3);
    double sum = 0;
    double variance = 0;
    for (int x = 0; x < 41; ++x) {
        const double weight = soft.pixelColor(x, 20).alphaF();
        QVERIFY(std::abs(weight - soft.pixelColor(40 - x, 20).alphaF()) < 0.02);
        QVERIFY(std::abs(weight - soft.pixelColor(20, x).alphaF()) < 0.02);
        sum += weight;
        variance += weight * (x - 20) * (x - 20);
    }
    // A field of 11 pixels has a variance of 10; the blur adds its own 9, to within what whole pixels allow.
    QVERIFY2(std::abs(variance / sum - 19) < 3.5, qPrintable(QString::number(variance / sum)));
}

void PanelOverlaysTest::largeText()
{
    UserDefaults::standard().setBoolean("m1_generateResponse", true);
    UserDefaults::standard().setString("generateResponse m1", "Dear Ana");
    UserDefaults::standard().setString("summarizeResponse m1", "Short.");
    show();
    m_fixture.shown()->setSize({400, 550});
    const double height = m_fixture.item("copyButton")->height();
    NSFont::shared().setTextScale(2);
    QTRY_VERIFY(m_fixture.item("copyButton")->height() > 1.5 * height);
    const auto place = [](QQuickItem* item) { return item->mapRectToScene({0, 0, item->width(), item->height()}); };
    QTRY_VERIFY(place(m_fixture.item("copyButton")).right() <= 400);
    // What the keyboard reaches comes into sight.
    for (const char* name : {"copyButton", "logOutButton", "submitButton"}) {
        m_fixture.item(name)->forceActiveFocus(Qt::TabFocusReason);
        QVERIFY2(QRectF(0, 0, 400, 550).contains(place(m_fixture.item(name))), name);
    }
    NSFont::shared().setTextScale(1);
}

int main(int argc, char** argv)
{
    return runViewTest<PanelOverlaysTest>(argc, argv);
}
#include "PanelOverlaysTest.moc"
