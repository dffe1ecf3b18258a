#include "state/SettingsKeys.h"
#include "support/TestProgram.h"

#include <QCoreApplication>

using namespace quillmate;

/// The keys to the letter: earlier versions of the program have stored under them.
class SettingsKeysTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void keys();
};

void SettingsKeysTest::keys()
{
    struct Row {
        std::string (*key)(const SettingsKeys::MessageId&);
        std::string ofMessage; // for an id that goes in as it is
        std::string ofEmpty;
        std::string ofAbsent;
    };
    const std::string id = "<a b/ü\"@x>";
    const std::vector<Row> rows = {
        {SettingsKeys::summarizeResponse, "summarizeResponse " + id, "summarizeResponse ", "summarizeResponse compose"},
        {SettingsKeys::generateResponse, "generateResponse " + id, "generateResponse ", "generateResponse compose"},
        {SettingsKeys::summarizeFlag, id + "_summarize", "_summarize", "_summarize"},
        {SettingsKeys::generateResponseFlag, id + "_generateResponse", "_generateResponse", "_generateResponse"},
        {SettingsKeys::fallbackContent, "Optional(\"" + id + "\") fallbackContent", "Optional(\"\") fallbackContent",
         "nil fallbackContent"},
        {SettingsKeys::chatHistory, "reply " + id, "reply ", "reply compose"},
    };
    for (const Row& row : rows) {
        QCOMPARE(row.key(id), row.ofMessage);
        QCOMPARE(row.key(""), row.ofEmpty);
        QCOMPARE(row.key(std::nullopt), row.ofAbsent);
    }
    QCOMPARE(std::string(SettingsKeys::selectedApiEndpoint), std::string("selectedApiEndpoint"));
}

QUILLMATE_TEST(SettingsKeysTest, QCoreApplication)
#include "SettingsKeysTest.moc"
