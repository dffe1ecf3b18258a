#include "hosts/preview/MessageListModel.h"
#include "platform/appkit/NSAppearance.h"
#include "platform/appkit/ViewEngine.h"
#include "views/ViewsModule.h"

#include <QAccessible>
#include <QColor>
#include <QGuiApplication>
#include <QPalette>
#include <QQmlComponent>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>

#include <algorithm>
#include <cmath>

void qml_register_types_Quillmate_Preview();

using namespace quillmate;

namespace
{

constexpr auto list = "import QtQuick\n"
                      "import Quillmate.Views\n"
                      "Rectangle {\n"
                      "    width: 340; height: 400; color: Theme.controlBackground\n"
                      "    ListView {\n"
                      "        objectName: 'list'; anchors.fill: parent\n"
                      "        delegate: MessageRow { objectName: 'row' + index; width: 340 }\n"
                      "    }\n"
                      "}\n";

double luminance(const QColor& color)
{
    const auto linear = [](double part) {
        return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

/// The contrast of two opaque colours (WCAG 2, "contrast ratio").
double contrast(const QColor& one, const QColor& other)
{
    const double first = luminance(one) + 0.05;
    const double second = luminance(other) + 0.05;
    return std::max(first, second) / std::min(first, second);
}

void collectTexts(const QQuickItem* item, QList<QQuickItem*>& texts)
{
    for (QQuickItem* child : item->childItems()) {
        if (child->inherits("QQuickText")) {
            texts.append(child);
        }
        collectTexts(child, texts);
    }
}

MessageEntry entry(const char* subject)
{
    return {{}, {{"Ann", "ann@example.com"}, subject, "The first words", QDateTime::currentDateTime()}};
}

} // namespace

/// The rows of the list: one that the extension has coloured, one that it has not.
class MessageRowTest : public QObject
{
    Q_OBJECT

private:
    MessageListModel m_model;
    QQuickWindow m_window;
    std::unique_ptr<QQuickItem> m_root;
    QQuickItem* m_list = nullptr;

    QQuickItem* row(int index) const
    {
        // A list is the parent of its rows on the screen only.
        const auto rows = m_list->property("contentItem").value<QQuickItem*>()->childItems();
        const auto found = std::find_if(rows.begin(), rows.end(), [index](const QQuickItem* item) {
            return item->objectName() == QStringLiteral("row%1").arg(index);
        });
        return found == rows.end() ? nullptr : *found;
    }
    QColor background(int index) const
    {
        const auto color = row(index)->findChild<QQuickItem*>("rowBackground")->property("color").value<QColor>();
        return color.alpha() == 0 ? m_root->property("color").value<QColor>() : color;
    }

private Q_SLOTS:
    void initTestCase()
    {
        registerViews();
        qml_register_types_Quillmate_Preview();
        QQmlComponent component(&ViewEngine::shared());
        component.setData(list, QUrl(QStringLiteral("qrc:/qt/qml/Quillmate/Preview/RowTest.qml")));
        m_root.reset(qobject_cast<QQuickItem*>(component.create()));
        QVERIFY2(m_root, qPrintable(component.errorString()));
        m_root->setParentItem(m_window.contentItem());
        m_window.resize(340, 400);
        m_window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&m_window));
        m_model.setEntries({entry("To Mars"), entry("To Venus")});
        m_list = m_root->findChild<QQuickItem*>("list");
        m_list->setProperty("model", QVariant::fromValue(&m_model));
        QTRY_VERIFY(row(0) && row(1));
        // Later than the rows, as decisions come.
        m_model.setDecidedColors({4, 0});
    }

    void contrasts_data()
    {
        QTest::addColumn<bool>("dark");
        QTest::addColumn<bool>("hovered");
        QTest::addColumn<bool>("current");
        for (const bool dark : {false, true}) {
            const char* appearance = dark ? "dark" : "light";
            QTest::addRow("%s", appearance) << dark << false << false;
            QTest::addRow("%s, hovered", appearance) << dark << true << false;
            QTest::addRow("%s, chosen", appearance) << dark << false << true;
            QTest::addRow("%s, chosen and hovered", appearance) << dark << true << true;
        }
    }

    void contrasts()
    {
        QFETCH(const bool, dark);
        QFETCH(const bool, hovered);
        QFETCH(const bool, current);
        QGuiApplication::setPalette(dark ? QPalette(Qt::white, Qt::black) : QPalette(Qt::black, Qt::white));
        QTRY_COMPARE(NSAppearance::shared().isDark(), dark);
        for (const int index : {0, 1}) {
            m_list->setProperty("currentIndex", current ? index : 1 - index);
            const QPoint inside = row(index)->mapToScene({170, 45}).toPoint();
            QTest::mouseMove(&m_window, hovered ? inside : QPoint(170, 390));
            const QColor resting = background(1 - index);
            if (index == 0) {
                // Whatever else it is, it is red, and told from the other.
                const QColor color = background(0);
                QVERIFY(color.red() > color.green() + 20 && color.red() > color.blue() + 20);
                QVERIFY(color != resting);
            }
            QList<QQuickItem*> texts;
            collectTexts(row(index), texts);
            QCOMPARE(texts.size(), 4);
            for (const QQuickItem* text : texts) {
                const double ratio = contrast(text->property("color").value<QColor>(), background(index));
                QVERIFY2(ratio >= 4.5, qPrintable(QStringLiteral("row %1, \"%2\": %3")
                                                      .arg(index)
                                                      .arg(text->property("text").toString())
                                                      .arg(ratio)));
            }
        }
    }

    void statesDiffer()
    {
        // Red takes nothing from what shows the choice and the pointer.
        m_list->setProperty("currentIndex", 1);
        QTest::mouseMove(&m_window, {170, 390});
        const QColor resting = background(0);
        QTest::mouseMove(&m_window, {170, 45});
        QTRY_VERIFY(background(0) != resting);
        const QColor hovered = background(0);
        m_list->setProperty("currentIndex", 0);
        QVERIFY(background(0) != resting && background(0) != hovered);
    }

    void descriptions()
    {
        const auto described = [this](int index) {
            return QAccessible::queryAccessibleInterface(row(index))->text(QAccessible::Description);
        };
        QCOMPARE(described(0), "Red background");
        QCOMPARE(described(1), QString());
        m_model.setDecidedColors({0, 7}); // Red is the one that is known.
        QCOMPARE(described(0), QString());
        QCOMPARE(described(1), QString());
        m_model.setDecidedColors({4}); // Not one for each.
        QCOMPARE(described(0), QString());
    }

    void cleanupTestCase() { m_root.reset(); }
};

int main(int argc, char** argv)
{
    // The palette alone decides, whatever the desktop is.
    for (const char* variable : {"QUILLMATE_APPEARANCE", "DBUS_SESSION_BUS_ADDRESS", "XDG_RUNTIME_DIR"}) {
        qunsetenv(variable);
    }
    ViewEngine::chooseRendering();
    QGuiApplication application(argc, argv);
    MessageRowTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "MessageRowTest.moc"
