#include "mail/HeaderFields.h"
#include "mail/EncodedWords.h"
#include "mail/Mailbox.h"
#include "support/TestProgram.h"

#include <QCoreApplication>

using namespace quillmate;

namespace
{

QString text(const std::string& utf8)
{
    return QString::fromStdString(utf8);
}

} // namespace

class HeaderFieldsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void values_data()
    {
        QTest::addColumn<QByteArray>("source");
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<QStringList>("values");

        const auto row = [](const char* label, const char* source, const char* name, const QStringList& values) {
            QTest::newRow(label) << QByteArray(source) << QByteArray(name) << values;
        };
        row("name in lower case", "MESSAGE-ID: <A@B>\n\n", "message-id", {"<A@B>"});
        row("no blank after the colon", "Subject:Lunch\n\n", "subject", {"Lunch"});
        row("blank before the colon", "Subject \t: Lunch\n\n", "subject", {"Lunch"});
        row("blanks at both ends", "Subject: \t Lunch \t\n\n", "subject", {"Lunch"});
        row("folded by a tab, kept", "Subject: one\n\ttwo\n\n", "subject", {"one\ttwo"});
        row("value on the next line", "Message-ID:\n <a@b>\n\n", "message-id", {"<a@b>"});
        row("CR LF", "Subject: one\r\n two\r\nTo: a@b\r\n\r\nSubject: no\r\n", "subject", {"one two"});
        row("several, in order", "Received: 1\nX: y\nReceived: 2\n\n", "received", {"1", "2"});
        row("body is not read", "X: y\n\nSubject: no\n", "subject", {});
        row("ends without an empty line", "X: y\nSubject: last", "subject", {"last"});
        row("a line that is no field", "X: y\nrubbish\n more rubbish\nSubject: s\n\n", "subject", {"s"});
        row("value with colons", "Subject: 10:30: lunch\n\n", "subject", {"10:30: lunch"});
        row("empty value", "Subject:\n\n", "subject", {""});
        row("encoded, ISO-2022-JP", "Subject: =?ISO-2022-JP?B?GyRCRnxLXBsoQg==?=\n\n", "subject", {"日本"});
        row("padded base64, twice", "Subject: =?utf-8?B?YQ==?= =?utf-8?b?Yg==?=\n\n", "subject", {"ab"});
        row("character cut between words", "Subject: =?utf-8?Q?=C3?= =?utf-8?Q?=A9?=\n\n", "subject", {"é"});
        row("two charsets", "Subject: =?utf-8?Q?=C3=A9?= =?iso-8859-1?Q?=E9?=\n\n", "subject", {"éé"});
        row("words among text", "Subject: a =?utf-8*en?q?b_c?= d  =?utf-8?Q?e?=\n\n", "subject", {"a b c d  e"});
        row("no encoded word", "Subject: =?x?= =?utf-8?Z?a?= =?utf-8?Q?a =?\n\n", "subject",
            {"=?x?= =?utf-8?Z?a?= =?utf-8?Q?a =?"});
        row("broken escape", "Subject: =?utf-8?Q?a=Z9=4?=\n\n", "subject", {"a=Z9"});
        row("raw UTF-8", "Subject: Caf\xC3\xA9\n\n", "subject", {"Café"});
        row("raw Latin-1", "Subject: Caf\xE9\n\n", "subject", {"Café"});
    }

    void values()
    {
        QFETCH(QByteArray, source);
        QFETCH(QByteArray, name);
        QFETCH(QStringList, values);
        const HeaderFields headers = HeaderFields::parse(source.toStdString());
        QStringList found;
        for (const HeaderFields::Field& field : headers.fields()) {
            if (field.name == name.toStdString()) {
                found.append(text(decodeHeaderText(field.value)));
            }
        }
        QCOMPARE(found, values);
    }

    void mailboxes_data()
    {
        QTest::addColumn<QByteArray>("value");
        QTest::addColumn<QStringList>("names");
        QTest::addColumn<QStringList>("addresses");

        const auto row = [](const char* label, const char* value, const QStringList& names,
                            const QStringList& addresses) {
            QTest::newRow(label) << QByteArray(value) << names << addresses;
        };
        row("quoted name with a comma", "\"Lee, Ann\" <ann@example.com>", {"Lee, Ann"}, {"ann@example.com"});
        row("padded encoded name", "=?utf-8?B?UsOpbmUu?= =?utf-8?B?YQ==?= =?utf-8?B?Yg==?= <r@example.com>",
            {"Réne.ab"}, {"r@example.com"});
        row("encoded name in quotes", "\"=?utf-8?Q?Ren=C3=A9?=\" <r@example.com>", {"René"}, {"r@example.com"});
        row("comment as name", "ann@example.com (Ann)", {"Ann"}, {"ann@example.com"});
        row("two", "a@example.com, B <b@example.com>", {"", "B"}, {"a@example.com", "b@example.com"});
        row("group", "Team: a@example.com, b@example.com;", {"", ""}, {"a@example.com", "b@example.com"});
        row("empty group", "undisclosed-recipients:;", {}, {});
    }

    void mailboxes()
    {
        QFETCH(QByteArray, value);
        QStringList names;
        QStringList addresses;
        for (const Mailbox& mailbox : parseMailboxes(value.toStdString())) {
            names.append(text(mailbox.name));
            addresses.append(text(mailbox.address));
        }
        QTEST(names, "names");
        QTEST(addresses, "addresses");
    }
};

QUILLMATE_TEST(HeaderFieldsTest, QCoreApplication)
#include "HeaderFieldsTest.moc"
