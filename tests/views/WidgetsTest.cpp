#include "views/ViewFixture.h"
#include "views/ViewTestMain.h"

#include <QPalette>
#include <QTest>

#include <cmath>

using namespace quillmate;

class WidgetsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_fixture.reset(); }
    void sessionButton_data();
    void sessionButton();
    void sessionButtonPresses();
    void customButton();
    void toast_data();
    void toast();
    void tooltip();
    void activityIndicator();
    void image_data();
    void image();

private:
    [[nodiscard]] QRectF placeOf(QQuickItem* item) const
    {
        return item->mapRectToItem(m_fixture.shown(), {0, 0, item->width(), item->height()});
    }

    ViewFixture m_fixture;
};

void WidgetsTest::sessionButton_data()
{
    QTest::addColumn<QByteArray>("background");
    QTest::addColumn<QByteArray>("border");
    QTest::addColumn<double>("padding");
    QTest::addColumn<bool>("white");
    QTest::newRow("filled") << QByteArray("Theme.indigo") << QByteArray("\"transparent\"") << 8.0 << true;
    QTest::newRow("outlined") << QByteArray("\"transparent\"") << QByteArray("Theme.purple") << 27.5 << false;
    QTest::newRow("filled and outlined") << QByteArray("Theme.blue") << QByteArray("Theme.blue") << 27.5 << true;
    QTest::newRow("neither") << QByteArray("\"transparent\"") << QByteArray("\"transparent\"") << 8.0 << false;
}

void WidgetsTest::sessionButton()
{
    QFETCH(const QByteArray, background);
    QFETCH(const QByteArray, border);
    QFETCH(const double, padding);
    QFETCH(const bool, white);
    m_fixture.showText(
        "SessionButton { width: 360; label: \"Generate\"; iconName: \"wand.and.stars\"; backgroundColor: " +
        background + "; borderColor: " + border + "; property color primaryColor: Theme.primary }");
    auto* button = m_fixture.shown();
    QVERIFY(button);
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
    QVERIFY(m_fixture.accessible(QAccessible::Button, QStringLiteral("Generate")));
}

void WidgetsTest::sessionButtonPresses()
{
    m_fixture.showText(
        "SessionButton { width: 360; label: \"Go\"; iconName: \"wand.and.stars\"; backgroundColor: \"red\";"
        " borderColor: \"transparent\"; property int presses: 0; onClicked: ++presses }");
    auto* button = m_fixture.shown();
    m_fixture.click(button);
    // Also beside the label: the button is as wide as there is room.
    QTest::mouseClick(&m_fixture.window(), Qt::LeftButton, Qt::NoModifier, {5, static_cast<int>(button->height() / 2)});
    button->forceActiveFocus(Qt::TabFocusReason);
    m_fixture.press(Qt::Key_Space);
    m_fixture.press(Qt::Key_Return);
    QVERIFY(m_fixture.pressAccessible(QAccessible::Button, QStringLiteral("Go")));
    QCOMPARE(button->property("presses").toInt(), 5);
    button->setEnabled(false);
    m_fixture.click(button);
    m_fixture.press(Qt::Key_Return);
    std::ignore = m_fixture.pressAccessible(QAccessible::Button, QStringLiteral("Go"));
    QCOMPARE(button->property("presses").toInt(), 5);
}

void WidgetsTest::customButton()
{
    m_fixture.showText(
        "CustomButton { width: 200; height: 40; title: \"A <b>title</b>\"; backgroundColor: \"#9333ea\" }");
    QVERIFY(m_fixture.accessible(QAccessible::Button, QStringLiteral("A <b>title</b>")));
    QCOMPARE(m_fixture.shown()->property("cornerRadius").toDouble(), 20.0);
    for (const char* side : {"leftPadding", "rightPadding", "topPadding", "bottomPadding"}) {
        QCOMPARE(m_fixture.shown()->property(side).toDouble(), 0.0);
    }
    const QImage picture = m_fixture.window().grabWindow();
    QCOMPARE(picture.pixelColor(30, 20), QColor(0x93, 0x33, 0xea));
    QVERIFY(picture.pixelColor(1, 1) != QColor(0x93, 0x33, 0xea)); // Its ends are round.
}

void WidgetsTest::toast_data()
{
    QTest::addColumn<QString>("message");
    QTest::newRow("short") << "Done.";
    QTest::newRow("long") << QStringLiteral("word ").repeated(60);
    QTest::newRow("markup") << "<b>Done.</b>";
}

void WidgetsTest::toast()
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

void WidgetsTest::tooltip()
{
    m_fixture.showText("TooltipView { property Text probe: Text { text: \"Text copied to clipboard!\"; font.pixelSize: "
                       "Theme.body } message: \"Text copied to clipboard!\" }");
    auto* tip = m_fixture.shown();
    const auto* probe = tip->property("probe").value<QQuickItem*>();
    QCOMPARE(tip->size(), QSizeF(probe->implicitWidth() + 20, probe->implicitHeight() + 20));
    QCOMPARE(tip->property("color").value<QColor>(), QColor::fromRgbF(0, 0, 0, 0.7F));
    QVERIFY(m_fixture.accessible(QAccessible::ToolTip, QStringLiteral("Text copied to clipboard!")));
    tip->setProperty("shown", false);
    QTRY_VERIFY(!tip->isVisible());
    QVERIFY(!m_fixture.accessible(QAccessible::ToolTip, QStringLiteral("Text copied to clipboard!")));
}

void WidgetsTest::activityIndicator()
{
    m_fixture.showText("ActivityIndicator { width: 50; height: 50 }");
    QVERIFY(m_fixture.accessible(QAccessible::Animation, QStringLiteral("Loading")));
    const auto darkest = [this] {
        const QImage picture = m_fixture.window().grabWindow().copy(0, 0, 50, 50);
        int value = 255;
        for (int y = 0; y < 50; ++y) {
            for (int x = 0; x < 50; ++x) {
                value = std::min(value, qGray(picture.pixel(x, y)));
            }
        }
        return value;
    };
    QVERIFY(darkest() < 128);
    // It turns.
    const QImage before = m_fixture.window().grabWindow();
    QTRY_VERIFY(m_fixture.window().grabWindow() != before);
    m_fixture.shown()->setProperty("running", false);
    QVERIFY(!m_fixture.shown()->isVisible());
    QCOMPARE(darkest(), 255);
    QVERIFY(!m_fixture.accessible(QAccessible::Animation, QStringLiteral("Loading")));
}

void WidgetsTest::image_data()
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

void WidgetsTest::image()
{
    QFETCH(const QByteArray, names);
    QFETCH(const QByteArray, visible);
    m_fixture.showText("ImageView { " + names + " }");
    QCOMPARE(QSizeF(m_fixture.shown()->implicitWidth(), m_fixture.shown()->implicitHeight()), QSizeF(70, 70));
    for (const char* image : {"firstImage", "secondImage", "missingImage"}) {
        QCOMPARE(m_fixture.item(image) != nullptr, visible == image);
    }
    QCOMPARE(m_fixture.accessible(QAccessible::StaticText, QStringLiteral("Failed to load image")) != nullptr,
             visible == "missingImage");
    QCOMPARE(m_fixture.window().grabWindow().pixelColor(35, 6) == QColor(Qt::red), visible == "missingImage");
}

int main(int argc, char** argv)
{
    return runViewTest<WidgetsTest>(argc, argv);
}
#include "WidgetsTest.moc"
