#include "hosts/preview/mail/MessageStore.h"
#include "hosts/preview/mail/MboxScanner.h"
#include "support/TestProgram.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <fcntl.h>
#include <future>
#include <sys/stat.h>
#include <unistd.h>

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
    return document ? QByteArray::fromStdString(document.value().message->rawData->copy()) : QByteArray("(failed)");
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
    void refused()
    {
        std::vector<std::pair<std::string, const char*>> names = {
            {m_folder.filePath("missing.eml").toStdString(), " does not exist"},
            {m_folder.path().toStdString(), " is a folder but no Maildir"},
            {write("empty", ""), " is empty"},
        };
        for (const auto& bytes :
             {QByteArray("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16), QByteArray("Once upon a time there was\n"),
              QByteArray("name: x\nvalue: y\n\nrest"), QByteArray("From here on,\nno mail\n"), QByteArray("\n\n\n")}) {
            names.emplace_back(write(QString::number(names.size()), bytes), " is no mail message");
        }
        for (const auto& [path, wrong] : names) {
            const MessageEntries entries = listMessages(path);
            QVERIFY2(!entries && entries.error().starts_with(path + wrong), path.c_str());
        }
    }

    void source()
    {
        const QByteArray binary("From: a@b\nContent-Type: image/x\n\n\0\xff\xfe", 36);
        const std::pair<QByteArray, QByteArray> rows[] = {
            {"From: a@b\r\nSubject: s\r\n\r\nx\r\n", "From: a@b\nSubject: s\n\nx\n"},
            {"From: a@b\n\nx\ry\r\r\nz\r", "From: a@b\n\nx\ry\r\nz\r"},
            {binary, binary},
            {"From: a@b\n\n>From x\n", "From: a@b\n\n>From x\n"},
            {"From a@b Tue Mar  4 09:15:37 2025\nSubject: s\n\n>From x\n>>From y\n> From z\n",
             "Subject: s\n\nFrom x\n>From y\n> From z\n"},
            {"From: a@b\nSubject: s", "From: a@b\nSubject: s"},
        };
        for (const auto& [file, source] : rows) {
            const MessageEntries entries = listMessages(write("source.eml", file));
            QVERIFY2(entries && entries.value().size() == 1, file.constData());
            QCOMPARE(loaded(entries.value().front()), source);
        }
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
        const std::string text = "From x\nSubject: one\n\nbody\n\nFrom y\nSubject: two\n\nbody\n\n";
        for (std::size_t step = 1; step < text.size(); ++step) {
            MboxScanner pieces;
            for (std::size_t i = 0; i < text.size(); i += step) {
                pieces.feed(std::string_view(text).substr(i, step));
            }
            QVERIFY((pieces.finish() == std::vector<MboxScanner::Range>{{7, 19}, {34, 19}}));
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
        QVERIFY(document.error().starts_with(path));
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
        QVERIFY(entries.error().starts_with(broken));
    }

    /// The writer comes when the reader is there.
    void mboxFromAPipe()
    {
        const QByteArray path = m_folder.filePath("pipe").toLocal8Bit();
        const QByteArray sent = "From x\n" + small + "\nFrom y\nSubject: two\n\nbody\n";
        QCOMPARE(::mkfifo(path.constData(), 0600), 0);
        auto reading = std::async(std::launch::async, [path] { return listMessages(path.toStdString()); });
        int writer = -1;
        const auto hasOpened = [&writer, &path] {
            writer = ::open(path.constData(), O_WRONLY | O_NONBLOCK | O_CLOEXEC); // Refused while nobody reads.
            return writer >= 0;
        };
        QVERIFY(QTest::qWaitFor(hasOpened));
        QCOMPARE(::write(writer, sent.constData(), static_cast<std::size_t>(sent.size())), sent.size());
        ::close(writer);
        const MessageEntries entries = reading.get();
        QVERIFY(entries);
        QCOMPARE(subjects(entries), QStringList({"one", "two"}));
        QCOMPARE(loaded(entries.value()[0]), small);
        QCOMPARE(loaded(entries.value()[1]), "Subject: two\n\nbody\n");
    }
};

QUILLMATE_TEST(MessageStoreTest, QCoreApplication)
#include "MessageStoreTest.moc"
