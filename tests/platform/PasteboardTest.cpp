#include "platform/appkit/NSPasteboard.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>
#include <QTest>

using namespace quillmate;

class PasteboardTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void strings();
};

void PasteboardTest::strings()
{
    const QClipboard* clipboard = QGuiApplication::clipboard();
    auto& pasteboard = NSPasteboard::general();
    const auto copy = [&pasteboard](const std::string& text) {
        pasteboard.declareTypes({NSPasteboard::PasteboardType::String});
        return pasteboard.setString(text, NSPasteboard::PasteboardType::String);
    };
    for (const std::string text : {"<b>Yes.</b>\r\n é 🪶 ", "", "one"}) {
        auto earlier = std::make_unique<QMimeData>();
        earlier->setHtml("<i>earlier</i>");
        earlier->setData("image/png", "x");
        QGuiApplication::clipboard()->setMimeData(earlier.release());
        QVERIFY(copy(text));
        QCOMPARE(clipboard->text().toStdString(), text);
        QCOMPARE(clipboard->mimeData()->formats(), QStringList{"text/plain"});
    }
    QVERIFY(!copy("caf\xe9"));
    QCOMPARE(clipboard->text(), QString());
}

QTEST_MAIN(PasteboardTest)
#include "PasteboardTest.moc"
