#include "features/CurrentMessage.h"
#include "platform/appkit/NSAppearance.h"
#include "platform/appkit/NSFont.h"
#include "platform/appkit/NSWorkspace.h"
#include "platform/foundation/schedule/MainOwned.h"
#include "platform/foundation/schedule/MainSchedule.h"
#include "platform/foundation/settings/UserDefaults.h"
#include "state/IncommingUpdatesManager.h"
#include "support/Contrast.h"
#include "support/TestProgram.h"
#include "views/HostedViewOf.h"
#include "views/ViewFixture.h"
#include "views/ViewTestApplication.h"
#include "views/drawing/BlurredPicture.h"
#include "views/session/SessionTabsViewState.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QJSValue>
#include <QMimeData>
#include <QSignalSpy>
#include <QTest>

using namespace quillmate;

/// The replies, and what lies over the panel and its tabs.
class PanelOverlaysTest : public QObject
{
    Q_OBJECT

private:
    void show()
    {
        m_state = makeMainOwned<SessionTabsViewState>(currentMessage(), nullptr);
        m_fixture.show(hostedViewOf(QStringLiteral("SessionTabsView"), m_state));
    }
    static void storeReply(const std::string& reply)
    {
        UserDefaults::standard().setBoolean("m1_generateResponse", true);
        UserDefaults::standard().setString("generateResponse m1", reply);
    }
    static void announceUpdate(bool announced)
    {
        IncommingUpdatesManager::shared().setIncommingUpdatesAvailable(announced);
    }
    [[nodiscard]] ButtonStateManager& buttons() { return m_state->buttonStateManager(); }

    ViewFixture m_fixture;
    std::shared_ptr<SessionTabsViewState> m_state;

private Q_SLOTS:
    void init()
    {
        m_state.reset();
        m_fixture.reset();
        // What a panel asks for as it appears stays unanswered: an answer would take the notice away.
        m_fixture.server().reset();
        m_fixture.server().reply("GET /api/v1" + ViewFixture::versionCheck(),
                                 TestReply{200, {}, {}, TestReply::Manner::Silence});
        ViewFixture::replyTo("m1", "The content");
    }

    void replySection()
    {
        show();
        QVERIFY(m_fixture.item("generateButton") && !m_fixture.item("replyText"));
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
        QVERIFY(m_fixture.accessible(QAccessible::StaticText,
                                     QStringLiteral("Regenerating a response will use additional tokens")));
        QCOMPARE(m_fixture.tabThrough("regenerateButton", 4),
                 (QStringList{"Regenerate response", "A <b>reply</b>", "Submit to train AI", "Copy to clipboard"}));
        buttons().setGenerateResponse(std::nullopt);
        QVERIFY(m_fixture.item("generateButton"));
    }

    void keyboardAfterTheFirstReply()
    {
        show();
        m_fixture.item("generateButton")->forceActiveFocus(Qt::TabFocusReason);
        UserDefaults::standard().setBoolean("m1_generateResponse", true);
        buttons().setGenerateResponse("Dear Ana");
        QVERIFY(m_fixture.item("regenerateButton")->hasActiveFocus());
        // A hidden control that holds the keyboard does nothing.
        m_fixture.anyItem("generateButton")->forceActiveFocus(Qt::TabFocusReason);
        m_fixture.log().take();
        m_fixture.press(Qt::Key_Return);
        QCOMPARE(m_fixture.log().take(), QStringList());
    }

    void contrast_data()
    {
        QTest::addColumn<bool>("dark");
        QTest::newRow("light") << false;
        QTest::newRow("dark") << true;
    }

    void contrast()
    {
        QFETCH(const bool, dark);
        NSAppearance::shared().setDark(dark);
        m_fixture.showText("Item { property var pairs: [[Theme.primary, Theme.windowBackground],"
                           " [Theme.primary, Theme.controlBackground], [Theme.secondary, Theme.windowBackground],"
                           " [Theme.secondary, Theme.hover], [Theme.primary, Theme.raised],"
                           " [Theme.noticeSecondary, Qt.tint(Theme.windowBackground, Theme.notice)],"
                           " [Theme.error, Theme.windowBackground], [Theme.accentText, Theme.windowBackground],"
                           " [\"white\", Theme.blue], [\"white\", Theme.indigo], [\"white\", Theme.accent],"
                           " [\"white\", Theme.userBubble], [Theme.primary, Theme.selection]] }");
        const auto pairs = m_fixture.shown()->property("pairs").value<QJSValue>().toVariant().toList();
        NSAppearance::shared().setDark(false);
        QCOMPARE(pairs.size(), 13);
        for (qsizetype i = 0; i < pairs.size(); ++i) {
            const double ratio = contrastOf(pairs[i].toList()[0].value<QColor>(), pairs[i].toList()[1].value<QColor>());
            QVERIFY2(ratio >= 4.5, qPrintable(QStringLiteral("pair %1: %2").arg(i).arg(ratio)));
        }
    }

    void toast()
    {
        const ManualTime time;
        show();
        QVERIFY(!m_fixture.item("toast"));
        buttons().announce("One");
        QVERIFY(m_fixture.accessible(QAccessible::AlertMessage, QStringLiteral("One")));
        ManualTime::advance(4.0);
        buttons().announce("Two"); // Stands as long as any.
        ManualTime::advance(4.9);
        QVERIFY(buttons().showToast());
        ManualTime::advance(0.1);
        QVERIFY(!buttons().showToast());
        QTRY_VERIFY(!m_fixture.item("toast"));
        buttons().announce("Three");
        QCOMPARE(ManualTime::pendingDelays(), std::vector<double>{5.0});
        // The panel goes before its toast does.
        m_fixture.close();
        m_state.reset();
        ManualTime::advance(5.0);
    }

    void copyNotice()
    {
        const ManualTime time;
        storeReply("Dear Ana");
        QGuiApplication::clipboard()->setText(QStringLiteral("before"));
        show();
        m_fixture.click(m_fixture.item("copyButton"));
        QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("Dear Ana"));
        QCOMPARE(QGuiApplication::clipboard()->mimeData()->formats(), QStringList{QStringLiteral("text/plain")});
        QTRY_VERIFY(m_fixture.accessible(QAccessible::ToolTip, QStringLiteral("Text copied to clipboard!")));
        ManualTime::advance(1.9);
        QVERIFY(m_state->modal()->reply()->showTooltip());
        ManualTime::advance(0.1);
        QVERIFY(!m_state->modal()->reply()->showTooltip());
        QTRY_VERIFY(!m_fixture.item("tooltip"));
    }

    void updateNotice()
    {
        show();
        QVERIFY(!m_fixture.item("updateModalView"));
        announceUpdate(true);
        QVERIFY(m_fixture.item("updateModalView"));
        auto* picture = qobject_cast<BlurredPicture*>(m_fixture.item("blurredPanel"));
        QCOMPARE(picture->opacity(), 0.4);
        QCOMPARE(picture->property("blurRadius").toDouble(), 3.0);
        // The picture follows the panel, and rests once it shows what is.
        QTRY_VERIFY(!picture->picture().isNull());
        const QImage before = picture->picture();
        m_state->summarizeStateManager().setSummarizeResponse("A summary that has come meanwhile.");
        QTRY_VERIFY(picture->picture() != before);
        QSignalSpy frames(&m_fixture.window(), &QQuickWindow::frameSwapped);
        QTRY_VERIFY(!frames.wait(600));
        QVERIFY(!frames.wait(600));
        announceUpdate(false);
        QVERIFY(!m_fixture.item("blurredPanel"));
        QTRY_VERIFY(!m_fixture.item("updateModalView"));
        announceUpdate(true);
        show(); // A new panel has it at once.
        QVERIFY(m_fixture.item("updateModalView"));
    }

    void panelBelowTheNoticeIsOutOfReach()
    {
        show();
        auto* generate = m_fixture.item("generateButton");
        const QPoint place = generate->mapToScene({generate->width() / 2, generate->height() / 2}).toPoint();
        generate->forceActiveFocus(Qt::TabFocusReason);
        announceUpdate(true);
        QTest::mouseClick(&m_fixture.window(), Qt::LeftButton, Qt::NoModifier, place);
        m_fixture.press(Qt::Key_Return);
        m_fixture.press(Qt::Key_Space);
        std::ignore = m_fixture.pressAccessible(QAccessible::Button, QStringLiteral("Generate response"));
        QVERIFY(
            !m_fixture.log().lines().contains(QStringLiteral("Access token is null in generate response API call")));
        QVERIFY(!buttons().isGenerateResponseLoading());
        QCOMPARE(m_fixture.tabThrough("remindMeLaterButton", 4),
                 (QStringList{"Remind me later", "Update now", "Log out", "Remind me later"}));
        announceUpdate(false);
        QVERIFY(m_fixture.pressAccessible(QAccessible::Button, QStringLiteral("Generate response")));
        QVERIFY(m_fixture.log().lines().contains(QStringLiteral("Access token is null in generate response API call")));
    }

    void noticeChoices_data()
    {
        QTest::addColumn<QString>("link"); // null: none
        QTest::addColumn<QStringList>("opened");
        const auto page = QStringLiteral("https://quillmate.example/download");
        QTest::newRow("a link") << page << QStringList{page};
        QTest::newRow("no link") << QString() << QStringList();
        QTest::newRow("not a URL") << "http://[" << QStringList();
        QTest::newRow("not a page") << "file:///etc/passwd" << QStringList();
    }

    void noticeChoices()
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
        announceUpdate(true);
        m_fixture.click(m_fixture.item("updateNowButton"));
        NSWorkspace::shared().setOpener(nullptr);
        QCOMPARE(seen, opened);
        QVERIFY(m_fixture.item("updateModalView"));
        QVERIFY(m_fixture.pressAccessible(QAccessible::Button, QStringLiteral("Remind me later")));
        QCOMPARE(m_fixture.log().lines().filter(QStringLiteral(" clicked")),
                 (QStringList{"Update now clicked", "Remind me later clicked"}));
        QVERIFY(!IncommingUpdatesManager::shared().incommingUpdatesAvailable());
        QVERIFY(m_fixture.item("sessionModalView")->isEnabled());
        QCOMPARE(m_fixture.item("sessionModalView")->x(), 0.0);
    }

    void blur()
    {
        QImage picture(41, 41, QImage::Format_ARGB32_Premultiplied);
        picture.fill(Qt::transparent);
        for (int y = 15; y < 26; ++y) {
            for (int x = 15; x < 26; ++x) {
                picture.setPixelColor(x, y, Qt::white);
            }
        }
        QCOMPARE(blurred(picture, 0), picture);
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

    void largeText()
    {
        storeReply("Dear Ana");
        UserDefaults::standard().setString("summarizeResponse m1", "Short.");
        show();
        m_fixture.shown()->setSize({400, 550});
        const double height = m_fixture.item("copyButton")->height();
        NSFont::shared().setTextScale(2);
        QTRY_VERIFY(m_fixture.item("copyButton")->height() > 1.5 * height);
        QTRY_VERIFY(m_fixture.placeOf("copyButton").right() <= 400);
        // What the keyboard reaches comes into sight.
        for (const char* name : {"copyButton", "logOutButton", "submitButton"}) {
            m_fixture.item(name)->forceActiveFocus(Qt::TabFocusReason);
            QVERIFY2(QRectF(0, 0, 400, 550).contains(m_fixture.placeOf(name)), name);
        }
        NSFont::shared().setTextScale(1);
    }
};

QUILLMATE_TEST(PanelOverlaysTest, quillmate::ViewTestApplication)
#include "PanelOverlaysTest.moc"
