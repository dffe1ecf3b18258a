#include "state/SettingsKeys.h"

#include <QTest>

#include <set>

using namespace quillmate;

class SettingsKeysTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void keys_data();
    void keys();
    void keysDiffer();
    void endpointKey() { QCOMPARE(std::string(SettingsKeys::selectedApiEndpoint), std::string("selectedApiEndpoint")); }
};

namespace
{

using Key = std::string (*)(const SettingsKeys::MessageId&);

struct Row {
    const char* name;
    Key key;
    const char* ofMessage; // for the id m1
    const char* ofEmpty;
    const char* ofAbsent;
};

const std::vector<Row>& table()
{
    static const std::vector<Row> rows = {
        {"summary", SettingsKeys::summarizeResponse, "summarizeResponse m1", "summarizeResponse ",
         "summarizeResponse compose"},
        {"reply", SettingsKeys::generateResponse, "generateResponse m1", "generateResponse ",
         "generateResponse compose"},
        {"summary flag", SettingsKeys::summarizeFlag, "m1_summarize", "_summarize", "_summarize"},
        {"reply flag", SettingsKeys::generateResponseFlag, "m1_generateResponse", "_generateResponse",
         "_generateResponse"},
        {"fallback content", SettingsKeys::fallbackContent, "Optional(\"m1\") fallbackContent",
         "Optional(\"\") fallbackContent", "nil fallbackContent"},
        {"chat", SettingsKeys::chatHistory, "reply m1", "reply ", "reply compose"},
    };
    return rows;
}

} // namespace

void SettingsKeysTest::keys_data()
{
    QTest::addColumn<int>("row");
    for (std::size_t i = 0; i < table().size(); ++i) {
        QTest::newRow(table()[i].name) << static_cast<int>(i);
    }
}

void SettingsKeysTest::keys()
{
    QFETCH(const int, row);
    const Row& expected = table()[static_cast<std::size_t>(row)];
    QCOMPARE(expected.key("m1"), std::string(expected.ofMessage));
    QCOMPARE(expected.key(""), std::string(expected.ofEmpty));
    QCOMPARE(expected.key(std::nullopt), std::string(expected.ofAbsent));
    // The id goes in as it is.
    const std::string id = "<a b/ü\"@x>";
    QVERIFY(expected.key(id).find(id) != std::string::npos);
}

void SettingsKeysTest::keysDiffer()
{
    for (const SettingsKeys::MessageId& id : {SettingsKeys::MessageId("m1"), SettingsKeys::MessageId()}) {
        std::set<std::string> keys;
        for (const Row& row : table()) {
            keys.insert(row.key(id));
        }
        QCOMPARE(keys.size(), table().size());
    }
}

QTEST_GUILESS_MAIN(SettingsKeysTest)
#include "SettingsKeysTest.moc"
