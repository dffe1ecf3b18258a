#include "hosts/preview/MessageListModel.h"
#include "platform/appkit/NSAppearance.h"
#include "platform/appkit/ViewEngine.h"
#include "support/Contrast.h"
#include "support/TestProgram.h"
#include "views/ViewTestApplication.h"
#include "views/ViewsModule.h"

#include <QAccessible>
#include <QQmlComponent>
#include <QQuickItem>
#include <QQuickTextDocument>
#include <QQuickWindow>
#include <QTextBlock>
#include <QTextDocument>

void qml_register_types_Quillmate_Preview();

using namespace quillmate;

namespace
{

constexpr auto list = "import QtQuick\n"
                      "import Quillmate.Views\n"
                      "ListView {\n"
                      "    property color ground: Theme.controlBackground\n"
                      "    width: 340; height: 400\n"
                      "    delegate: MessageRow { objectName: 'row' + index; width: 340 }\n"
                      "}\n";

ListedMessage message(const char* subject, int color)
{
    return {{{}, {{"Ann", "ann@example.com"}, subject, "The first words", QDateTime::currentDateTime()}}, color};
}

} // namespace

/// The rows of the list: one that the extension has coloured red, one that it has not, one in a colour unknown here;
/// and the text of a message.
class MessageViewsTest : public QObject
{
    Q_OBJECT

private:
    MessageListModel m_model;
    QQuickWindow m_window;
    std::unique_ptr<QQuickItem> m_list;

    QQuickItem* row(int index) const
    {
        QQuickItem* found = nullptr;
        QMetaObject::invokeMethod(m_list.get(), "itemAtIndex", Q_RETURN_ARG(QQuickItem*, found), Q_ARG(int, index));
        return found;
    }
    QColor background(int index) const
    {
        const auto color = row(index)->findChild<QQuickItem*>("rowBackground")->property("color").value<QColor>();
        return color.alpha() == 0 ? m_list->property("ground").value<QColor>() : color;
    }
    void choose(int index) { m_list->setProperty("currentIndex", index); }
    void pointAt(int index) { QTest::mouseMove(&m_window, {170, index < 0 ? 390 : index * 90 + 45}); }
    void checkRow(int index) const
    {
        const QColor color = background(index);
        // Whatever else it is, it is red, and told from the other.
        QCOMPARE(color.red() > color.green() + 20 && color.red() > color.blue() + 20, index == 0);
        int texts = 0;
        for (QQuickItem* text : row(index)->findChildren<QQuickItem*>()) {
            if (text->inherits("QQuickText")) {
                ++texts;
                QVERIFY2(contrastOf(text->property("color").value<QColor>(), color) >= 4.5,
                         qPrintable(text->property("text").toString()));
            }
        }
        QCOMPARE(texts, 4);
    }

private Q_SLOTS:
    void initTestCase()
    {
        registerViews();
        qml_register_types_Quillmate_Preview();
        QQmlComponent component(&ViewEngine::shared());
        component.setData(list, QUrl(QStringLiteral("qrc:/qt/qml/Quillmate/Preview/RowTest.qml")));
        m_list.reset(qobject_cast<QQuickItem*>(component.create()));
        QVERIFY2(m_list, qPrintable(component.errorString()));
        m_list->setParentItem(m_window.contentItem());
        m_window.resize(340, 400);
        m_window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&m_window));
        m_model.setMessages({message("To Mars", 4), message("To Venus", 0), message("To Pluto", 7)});
        m_list->setProperty("model", QVariant::fromValue(&m_model));
        QTRY_VERIFY(row(0) && row(2));
    }

    void contrasts()
    {
        for (const bool dark : {false, true}) {
            NSAppearance::shared().setDark(dark);
            for (const bool hovered : {false, true}) {
                for (const bool current : {false, true}) {
                    for (const int index : {0, 1}) {
                        choose(current ? index : 2);
                        pointAt(hovered ? index : -1);
                        checkRow(index);
                    }
                }
            }
        }
    }

    void statesDiffer()
    {
        // Red takes nothing from what shows the choice and the pointer.
        choose(1);
        pointAt(-1);
        const QColor resting = background(0);
        pointAt(0);
        QTRY_VERIFY(background(0) != resting);
        const QColor hovered = background(0);
        choose(0);
        QVERIFY(background(0) != resting && background(0) != hovered);
    }

    void descriptions()
    {
        const char* described[] = {"Red background", "", ""}; // Red is the one that is known.
        for (int i = 0; i < 3; ++i) {
            QCOMPARE(QAccessible::queryAccessibleInterface(row(i))->text(QAccessible::Description), described[i]);
        }
    }

    void paragraphsRunTheirOwnWay()
    {
        QQmlComponent component(&ViewEngine::shared(),
                                QUrl(QStringLiteral("qrc:/qt/qml/Quillmate/Preview/MessageBody.qml")));
        const std::unique_ptr<QObject> body(component.createWithInitialProperties(
            {{"name", "Message"}, {"areaName", "area"}, {"text", QStringLiteral("\n12 Hello\n> سلام\n>\n> x\n>")}}));
        QVERIFY2(body, qPrintable(component.errorString()));
        const auto* text =
            body->findChild<QObject*>("area")->property("textDocument").value<QQuickTextDocument*>()->textDocument();
        QList<Qt::LayoutDirection> found;
        for (QTextBlock block = text->begin(); block.isValid(); block = block.next()) {
            found.append(block.blockFormat().layoutDirection());
        }
        QCOMPARE(found, QList({Qt::LayoutDirectionAuto, Qt::LeftToRight, Qt::RightToLeft, Qt::RightToLeft,
                               Qt::LeftToRight, Qt::LeftToRight}));
        QVERIFY(!text->isUndoAvailable());
    }

    void cleanupTestCase() { m_list.reset(); }
};

QUILLMATE_TEST(MessageViewsTest, quillmate::ViewTestApplication)

#include "MessageViewsTest.moc"
