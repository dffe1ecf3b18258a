#include "support/TestProgram.h"
#include "views/ViewFixture.h"
#include "views/ViewTestApplication.h"

#include <QTest>

#include <cmath>

using namespace quillmate;

class WidgetsTest : public QObject
{
    Q_OBJECT

private:
    [[nodiscard]] QRectF placeOf(QQuickItem* item) const
    {
        return item->mapRectToItem(m_fixture.shown(), {0, 0, item->width(), item->height()});
    }

    ViewFixture m_fixture;

private Q_SLOTS:
    void init() { m_fixture.reset(); }

    void sessionButton_data()
    {
        QTest::addColumn<QByteArray>("colors");
        QTest::addColumn<double>("padding");
        QTest::addColumn<bool>("white");
        const auto row = [](const char* name, const char* background, const char* border, double padding, bool white) {
            QTest::newRow(name) << "backgroundColor: " + QByteArray(background) + "; borderColor: " + border << padding
                                << white;
        };
        row("filled", "Theme.indigo", "\"transparent\"", 8, true);
        row("outlined", "\"transparent\"", "Theme.purple", 27.5, false);
        row("filled and outlined", "Theme.blue", "Theme.blue", 27.5, true);
        row("neither", "\"transparent\"", "\"transparent\"", 8, false);
    }

    void sessionButton()
    {
        QFETCH(const QByteArray, colors);
        QFETCH(const double, padding);
        QFETCH(const bool, white);
        m_fixture.showText("SessionButton { width: 360; label: \"Generate\"; iconName: \"wand.and.stars\"; " + colors +
                           "; property color primaryColor: Theme.primary }");
        auto* button = m_fixture.shown();
        auto* content = button->property("contentItem").value<QQuickItem*>();
        QVERIFY(content->implicitWidth() > 40);
        QCOMPARE(button->height(), content->implicitHeight() + 16);
        // The colour lies behind the padded label, in the middle; the outline goes around the whole width.
        const QRectF field = placeOf(m_fixture.anyItem("field"));
        QCOMPARE(field.width(), content->implicitWidth() + 2 * padding);
        QVERIFY(std::abs(field.center().x() - 180) <= 0.5); // On whole points.
        QCOMPARE(placeOf(m_fixture.anyItem("outline")), QRectF(0, 0, 360, button->height()));
        QCOMPARE(button->property("foreground").value<QColor>(),
                 white ? QColor(Qt::white) : button->property("primaryColor").value<QColor>());
    }

    void presses()
    {
        m_fixture.showText("SessionButton { width: 360; label: \"Go\"; iconName: \"wand.and.stars\";"
                           " backgroundColor: \"red\"; borderColor: \"transparent\"; property int presses: 0;"
                           " onClicked: ++presses }");
        auto* button = m_fixture.shown();
        const auto press = [&](const QString& manner) {
            button->setProperty("presses", 0);
            if (manner == QLatin1String("mouse")) {
                m_fixture.click(button);
            } else if (manner == QLatin1String("mouse beside the label")) { // It is as wide as there is room.
                QTest::mouseClick(&m_fixture.window(), Qt::LeftButton, {}, {5, static_cast<int>(button->height() / 2)});
            } else if (manner == QLatin1String("screen reader")) {
                std::ignore = m_fixture.pressAccessible(QAccessible::Button, QStringLiteral("Go"));
            } else {
                button->forceActiveFocus(Qt::TabFocusReason);
                m_fixture.hold(manner == QLatin1String("Space")    ? Qt::Key_Space
                               : manner == QLatin1String("Return") ? Qt::Key_Return
                                                                   : Qt::Key_Enter);
            }
            return button->property("presses").toInt();
        };
        for (const bool enabled : {true, false}) {
            button->setEnabled(enabled);
            for (const char* manner :
                 {"mouse", "mouse beside the label", "screen reader", "Space", "Return", "Enter"}) {
                // Once, also by a key that is held.
                QVERIFY2(press(QString::fromLatin1(manner)) == (enabled ? 1 : 0), manner);
            }
        }
    }

    void customButton()
    {
        m_fixture.showText(
            "CustomButton { width: 200; height: 40; title: \"A <b>title</b>\"; backgroundColor: \"#9333ea\" }");
        QVERIFY(m_fixture.accessible(QAccessible::Button, QStringLiteral("A <b>title</b>")));
        const QImage picture = m_fixture.window().grabWindow();
        QCOMPARE(picture.pixelColor(30, 20), QColor(0x93, 0x33, 0xea));
        QCOMPARE(picture.pixelColor(2, 20), QColor(0x93, 0x33, 0xea));
        QVERIFY(picture.pixelColor(2, 4) != QColor(0x93, 0x33, 0xea)); // Its ends are round.
    }

    void toast_data()
    {
        QTest::addColumn<QString>("message");
        QTest::newRow("short") << "Done.";
        QTest::newRow("long") << QStringLiteral("word ").repeated(60);
        QTest::newRow("markup") << "<b>Done.</b>";
    }

    void toast()
    {
        QFETCH(const QString, message);
        m_fixture.showText("ToastView { width: 400; height: 600; message: \"" + message.toUtf8() + "\" }");
        const QRectF field = placeOf(m_fixture.item("field"));
        QCOMPARE(field.bottom(), 560.0);
        QCOMPARE(field.center().x(), 200.0);
        QVERIFY(field.width() < 400);
        QVERIFY(field.top() > 0);
        QVERIFY(m_fixture.accessible(QAccessible::AlertMessage, message));
        const QImage picture = m_fixture.window().grabWindow();
        QCOMPARE(picture.pixelColor(static_cast<int>(field.center().x()), static_cast<int>(field.top()) + 4),
                 QColor(Qt::black));
    }

    void tooltip()
    {
        const auto message = QStringLiteral("Text copied to clipboard!");
        m_fixture.showText(
            "TooltipView { id: tip; property Text probe: Text { text: tip.message; font.pixelSize: Theme.body }"
            " message: \"" +
            message.toUtf8() + "\" }");
        auto* tip = m_fixture.shown();
        const auto* probe = tip->property("probe").value<QQuickItem*>();
        QCOMPARE(tip->size(), QSizeF(probe->implicitWidth() + 20, probe->implicitHeight() + 20));
        QCOMPARE(tip->property("color").value<QColor>(), QColor::fromRgbF(0, 0, 0, 0.7F));
        QVERIFY(m_fixture.accessible(QAccessible::ToolTip, message));
        tip->setProperty("shown", false);
        QTRY_VERIFY(!tip->isVisible());
        QVERIFY(!m_fixture.accessible(QAccessible::ToolTip, message));
    }

    void activityIndicator()
    {
        m_fixture.showText("ActivityIndicator { width: 50; height: 50 }");
        QVERIFY(m_fixture.accessible(QAccessible::Animation, QStringLiteral("Loading")));
        const QImage before = m_fixture.window().grabWindow();
        QTRY_VERIFY(m_fixture.window().grabWindow() != before); // It turns.
        m_fixture.shown()->setProperty("running", false);
        QVERIFY(!m_fixture.accessible(QAccessible::Animation, QStringLiteral("Loading")));
        const QImage stopped = m_fixture.window().grabWindow();
        QImage empty = stopped;
        empty.fill(stopped.pixelColor(0, 0));
        QCOMPARE(stopped, empty);
    }

    void image_data()
    {
        QTest::addColumn<QByteArray>("names");
        QTest::addColumn<QByteArray>("visible");
        QTest::newRow("the logo") << QByteArray() << QByteArray("firstImage");
        QTest::newRow("the other image") << QByteArray("firstName: \"nowhere\"; secondName: \"quillmateLogo\"")
                                         << QByteArray("secondImage");
        QTest::newRow("neither") << QByteArray("firstName: \"nowhere\"; secondName: \"nor here\"")
                                 << QByteArray("missingImage");
        QTest::newRow("both") << QByteArray("secondName: \"quillmateLogo\"") << QByteArray("firstImage");
    }

    void image()
    {
        QFETCH(const QByteArray, names);
        QFETCH(const QByteArray, visible);
        m_fixture.showText("ImageView { " + names + " }");
        QCOMPARE(QSizeF(m_fixture.shown()->implicitWidth(), m_fixture.shown()->implicitHeight()), QSizeF(70, 70));
        for (const char* image : {"firstImage", "secondImage", "missingImage"}) {
            QCOMPARE(m_fixture.item(image) != nullptr, visible == image);
        }
        const bool missing = visible == "missingImage";
        QCOMPARE(m_fixture.accessible(QAccessible::StaticText, QStringLiteral("Failed to load image")) != nullptr,
                 missing);
        QCOMPARE(m_fixture.window().grabWindow().pixelColor(35, 6) == QColor(Qt::red), missing);
    }

    void newTextIsShownFromItsTop()
    {
        m_fixture.showText("ScrollableText { width: 300; height: 200; text: \"one \".repeat(2000) }");
        auto* view = m_fixture.shown();
        const auto top = [view] { return view->property("contentY").toDouble(); };
        view->setProperty("contentY", 500);
        view->setProperty("text", QStringLiteral("two ").repeated(2000));
        QCOMPARE(top(), 0.0);
        // Also for a reader whose keyboard is at the end of the old one.
        m_fixture.item("scrollableText")->forceActiveFocus(Qt::TabFocusReason);
        m_fixture.press(Qt::Key_End, Qt::ControlModifier);
        QVERIFY(top() > 500);
        view->setProperty("text", QStringLiteral("three ").repeated(2000));
        QCOMPARE(top(), 0.0);
    }
};

QUILLMATE_TEST(WidgetsTest, quillmate::ViewTestApplication)
#include "WidgetsTest.moc"
