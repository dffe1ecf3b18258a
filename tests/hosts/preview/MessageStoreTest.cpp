#include "hosts/preview/mail/MessageStore.h"
#include "hosts/preview/mail/MboxScanner.h"
#include "hosts/preview/mail/SourceText.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace quillmate;

namespace
{

const QByteArray small = "From: a@example.com\nSubject: one\nMessage-ID: <1@example.com>\n\nbody\n";

QStringList subjects(const MessageEntries& entries)
{
    QStringList found;
    for (const MessageEntry& entry : entries.value()) {
        found.append(QString::fromStdString(entry.summary.subject));
    }
    return found;
}

QByteArray loaded(const MessageEntry& entry)
{
    const auto document = loadMessage(entry.location);
    return document ? QByteArray::fromStdString(*document.value().message->rawData) : QByteArray("(failed)");
}

} // namespace

class MessageStoreTest : public QObject
{
    Q_OBJECT

private:
    std::string write(const QString& name, const QByteArray& bytes)
    {
        QFile file(m_folder.filePath(name));
        const bool written = file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
        return written ? file.fileName().toStdString() : std::string();
    }

    QTemporaryDir m_folder;

private Q_SLOTS:
    void refused_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<MailFailure::Kind>("kind");

        QTest::newRow("empty") << QByteArray("") << MailFailure::Kind::Empty;
        QTest::newRow("binary") << QByteArray("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16) << MailFailure::Kind::NotMail;
        QTest::newRow("prose") << QByteArray("Once upon a time there was\n") << MailFailure::Kind::NotMail;
        QTest::newRow("settings text") << QByteArray("name: x\nvalue: y\n\nrest") << MailFailure::Kind::NotMail;
        QTest::newRow("From line over nothing") << QByteArray("From here on,\nno mail\n") << MailFailure::Kind::NotMail;
        QTest::newRow("line ends only") << QByteArray("\n\n\n") << MailFailure::Kind::NotMail;
    }

    void refused()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(MailFailure::Kind, kind);
        const std::string path = write("refused", bytes);
        const MessageEntries entries = listMessages(path);
        QVERIFY(!entries);
        QCOMPARE(entries.error().kind, kind);
        QVERIFY(entries.error().text.starts_with(path));
    }

    void refusedNames()
    {
        QVERIFY(QDir(m_folder.path()).mkdir("no-maildir"));
        const struct {
            QString name;
            MailFailure::Kind kind;
        } cases[] = {{"missing.eml", MailFailure::Kind::Missing}, {"no-maildir", MailFailure::Kind::NotMail}};
        for (const auto& item : cases) {
            const std::string path = m_folder.filePath(item.name).toStdString();
            const MessageEntries entries = listMessages(path);
            QVERIFY(!entries);
            QCOMPARE(entries.error().kind, item.kind);
            QVERIFY(entries.error().text.starts_with(path));
        }
    }

    void source_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QByteArray>("source");

        QTest::newRow("as it is") << small << small;
        QTest::newRow("CR LF") << QByteArray("From: a@b\r\nSubject: s\r\n\r\nx\r\n")
                               << QByteArray("From: a@b\nSubject: s\n\nx\n");
        QTest::newRow("lone CR stays") << QByteArray("From: a@b\n\nx\ry\r\r\nz\r")
                                       << QByteArray("From: a@b\n\nx\ry\r\nz\r");
        QTest::newRow("bytes of any kind")
            << QByteArray("From: a@b\n\n\0\xff\xfe", 14) << QByteArray("From: a@b\n\n\0\xff\xfe", 14);
        QTest::newRow(">From stays outside an mbox")
            << QByteArray("From: a@b\n\n>From x\n") << QByteArray("From: a@b\n\n>From x\n");
        QTest::newRow("one-message mbox")
            << QByteArray("From a@b Tue Mar  4 09:15:37 2025\nSubject: s\n\n>From x\n>>From y\n> From z\n")
            << QByteArray("Subject: s\n\nFrom x\n>From y\n> From z\n");
        QTest::newRow("header without an end")
            << QByteArray("From: a@b\nSubject: s") << QByteArray("From: a@b\nSubject: s");
    }

    void source()
    {
        QFETCH(QByteArray, file);
        const MessageEntries entries = listMessages(write("source.eml", file));
        QVERIFY(entries.hasValue());
        QCOMPARE(entries.value().size(), std::size_t{1});
        QTEST(loaded(entries.value().front()), "source");
    }

    void mbox()
    {
        const std::string path =
            write("mail.mbox", "From x Tue Mar  4 09:15:37 2025\r\nSubject: one\r\n\r\nFrom me, not split\r\n\r\n"
                               "From the body after a blank line\r\n\r\nFrom y\r\nSubject: two\r\n\r\n>From z\r\n\r\n"
                               "From z\nSubject: three\n\nno line end");
        const MessageEntries entries = listMessages(path);
        QVERIFY(entries.hasValue());
        QCOMPARE(subjects(entries), QStringList({"one", "two", "three"}));
        QCOMPARE(loaded(entries.value()[0]),
                 "Subject: one\n\nFrom me, not split\n\nFrom the body after a blank line\n");
        QCOMPARE(loaded(entries.value()[1]), "Subject: two\n\nFrom z\n");
        QCOMPARE(loaded(entries.value()[2]), "Subject: three\n\nno line end");
    }

    void mboxInPieces()
    {
        const std::string text =
            "From x\nSubject: one\n\nbody\n\nFrom y\nSubject: two\n\n" + std::string(600, 'l') + "\n\n";
        MboxScanner whole;
        whole.feed(text);
        const auto expected = whole.finish();
        QCOMPARE(expected.size(), std::size_t{2});
        for (std::size_t step = 1; step < 20; ++step) {
            MboxScanner pieces;
            for (std::size_t i = 0; i < text.size(); i += step) {
                pieces.feed(std::string_view(text).substr(i, step));
            }
            QVERIFY(pieces.finish() == expected);
        }
    }

    void mboxChangedSinceListed()
    {
        const std::string path =
            write("shrinks.mbox", "From x\nSubject: one\n\nbody\n\nFrom y\nSubject: two\n\nbody\n");
        const MessageEntries entries = listMessages(path);
        QVERIFY(entries.hasValue());
        write("shrinks.mbox", "From x\nSubject: one\n\nbody\n");
        const auto document = loadMessage(entries.value()[1].location);
        QVERIFY(!document);
        QVERIFY(document.error().text.starts_with(path));
    }

    void maildir()
    {
        QDir folder(m_folder.path());
        QVERIFY(folder.mkpath("dir/cur") && folder.mkpath("dir/new") && folder.mkpath("dir/tmp"));
        const std::string path = m_folder.filePath("dir").toStdString();
        QCOMPARE(subjects(listMessages(path)), QStringList());

        write("dir/cur/1:2,S", "Subject: old\nDate: Mon, 3 Mar 2025 10:00:00 +0000\n\nx\n");
        write("dir/new/2", "Subject: newest\nDate: Wed, 5 Mar 2025 10:00:00 +0000\n\nx\n");
        write("dir/cur/3:2,", "Subject: middle\nDate: Tue, 4 Mar 2025 23:00:00 -0500\n\nx\n");
        write("dir/tmp/4", "Subject: not delivered yet\n\nx\n");
        write("dir/cur/.hidden", "no mail");
        QCOMPARE(subjects(listMessages(path)), QStringList({"newest", "middle", "old"}));

        const std::string broken = write("dir/cur/5:2,", "no mail");
        const MessageEntries entries = listMessages(path);
        QVERIFY(!entries);
        QVERIFY(entries.error().text.starts_with(broken));
    }

    void largeMessage()
    {
        QByteArray source = "From: a@example.com\r\nSubject: large\r\nContent-Type: multipart/mixed; boundary=b\r\n\r\n"
                            "--b\r\nContent-Type: text/plain\r\n\r\nSee the attachment.\r\n"
                            "--b\r\nContent-Type: application/zip\r\nContent-Transfer-Encoding: base64\r\n\r\n";
        const QByteArray line = QByteArray(76, 'A') + "\r\n";
        while (source.size() < qsizetype{25} * 1024 * 1024) {
            source += line;
        }
        source += "--b--\r\n";
        const MessageEntries entries = listMessages(write("large.eml", source));
        QVERIFY(entries.hasValue());
        QCOMPARE(QString::fromStdString(entries.value().front().summary.snippet), "See the attachment.");
        const auto document = loadMessage(entries.value().front().location);
        QVERIFY(document.hasValue());
        const QByteArray expected = source.replace("\r\n", "\n");
        QVERIFY(QByteArray::fromStdString(*document.value().message->rawData) == expected);
        QCOMPARE(QString::fromStdString(document.value().text.text), "See the attachment.");
    }

    void largeMbox()
    {
        QByteArray mbox;
        for (int i = 0; i < 5000; ++i) {
            mbox += "From x\nSubject: number " + QByteArray::number(i) + "\n\n" + QByteArray(900, 'x') + "\n\n";
        }
        const MessageEntries entries = listMessages(write("large.mbox", mbox));
        QVERIFY(entries.hasValue());
        QCOMPARE(entries.value().size(), std::size_t{5000});
        QCOMPARE(loaded(entries.value()[4999]), "Subject: number 4999\n\n" + QByteArray(900, 'x') + "\n");
    }

    void crlfSampleKeepsItsLineEnds()
    {
        QFile sample(QStringLiteral(QUILLMATE_SAMPLES "/crlf.eml"));
        QVERIFY(sample.open(QIODevice::ReadOnly));
        const QByteArray bytes = sample.readAll();
        QCOMPARE(bytes.count("\r\n"), bytes.count('\n'));
        const MessageEntries entries = listMessages(sample.fileName().toStdString());
        QVERIFY(entries.hasValue());
        const QByteArray source = loaded(entries.value().front());
        QCOMPARE(source.count('\r'), 0);
        QVERIFY(source.contains("\n\nDear Mr Balogun,\n"));
    }
};

QTEST_GUILESS_MAIN(MessageStoreTest)
#include "MessageStoreTest.moc"
