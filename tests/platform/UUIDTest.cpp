#include "platform/foundation/UUID.h"

#include <QTest>

#include <set>

using namespace quillmate;

class UUIDTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void texts_data();
    void texts();
    void random();
};

void UUIDTest::texts_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<bool>("valid");
    const QByteArray good = "01234567-89AB-CDEF-0123-456789abcdef";
    QTest::newRow("either case") << good << true;
    QTest::newRow("nothing") << QByteArray() << false;
    QTest::newRow("too short") << good.chopped(1) << false;
    QTest::newRow("in braces") << "{" + good + "}" << false;
    QTest::newRow("without hyphens") << QByteArray("0123456789ABCDEF0123456789ABCDEF0123") << false;
    QTest::newRow("a hyphen too early") << QByteArray("0123456-789AB-CDEF-0123-456789abcdef") << false;
    for (const char other : {'g', 'G', '@', '`', '/', ':', '-', ' ', '\0', '\xc1'}) {
        QTest::addRow("byte %d", other) << QByteArray(good).replace('B', other) << false;
    }
}

void UUIDTest::texts()
{
    QFETCH(const QByteArray, text);
    QFETCH(const bool, valid);
    const auto read = UUID::parse(text.toStdString());
    QCOMPARE(read.has_value(), valid);
    if (read) {
        QCOMPARE(QByteArray::fromStdString(read->uuidString()), text.toUpper());
        QVERIFY(*read == UUID::parse(text.toLower().toStdString()).value());
    }
}

void UUIDTest::random()
{
    std::set<std::string> seen;
    for (int i = 0; i < 1000; ++i) {
        const std::string text = UUID::random().uuidString();
        // RFC 4122, section 4.4: version 4, the variant's two bits 10.
        QCOMPARE(text.at(14), '4');
        QVERIFY(std::string("89AB").find(text.at(19)) != std::string::npos);
        QVERIFY(seen.insert(text).second);
    }
}

QTEST_GUILESS_MAIN(UUIDTest)
#include "UUIDTest.moc"
