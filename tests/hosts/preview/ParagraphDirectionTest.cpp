#include "hosts/preview/ParagraphDirection.h"

#include <QQmlComponent>
#include <QQmlEngine>
#include <QSignalSpy>
#include <QTest>
#include <QTextBlock>
#include <QTextDocument>

using namespace quillmate;

class ParagraphDirectionTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void eachParagraphItsOwn()
    {
        QQmlEngine engine;
        QQmlComponent component(&engine);
        component.setData("import QtQuick\nTextEdit { text: '\\n12 Hello\\n> سلام\\n>\\n> x\\n>' }", QUrl());
        const std::unique_ptr<QObject> edit(component.create());
        QVERIFY2(edit, qPrintable(component.errorString()));
        auto* document = edit->property("textDocument").value<QQuickTextDocument*>();

        const ParagraphDirection directions;
        directions.apply(document);
        QList<Qt::LayoutDirection> found;
        for (QTextBlock block = document->textDocument()->begin(); block.isValid(); block = block.next()) {
            found.append(block.blockFormat().layoutDirection());
        }
        QCOMPARE(found, QList({Qt::LayoutDirectionAuto, Qt::LeftToRight, Qt::RightToLeft, Qt::RightToLeft,
                               Qt::LeftToRight, Qt::LeftToRight}));
        QVERIFY(!document->textDocument()->isUndoAvailable());

        // A view applies it on every change of the text, so it must come to rest.
        QSignalSpy changed(edit.get(), SIGNAL(textChanged()));
        directions.apply(document);
        QCOMPARE(changed.count(), 0);
    }
};

QTEST_MAIN(ParagraphDirectionTest)
#include "ParagraphDirectionTest.moc"
