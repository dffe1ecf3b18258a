#include "hosts/preview/mail/MessageStore.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>
#include <fcntl.h>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

using namespace quillmate;

namespace
{

const QByteArray small = "From: a@example.com\nSubject: one\nMessage-ID: <1@example.com>\n\nbody\n";

QByteArray loaded(const MessageEntries& entries)
{
    const auto document = loadMessage(entries.value().front().location);
    return document ? QByteArray::fromStdString(*document.value().message->rawData) : QByteArray("(failed)");
}

} // namespace

class MessagePipeTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;

private Q_SLOTS:
    void pipe()
    {
        const QByteArray path = m_folder.filePath("pipe").toLocal8Bit();
        QCOMPARE(::mkfifo(path.constData(), 0600), 0);
        const QScopedPointer<QThread> writer(QThread::create([path] {
            QFile file(QString::fromLocal8Bit(path));
            if (file.open(QIODevice::WriteOnly | QIODevice::Unbuffered)) {
                file.write(small);
            }
        }));
        writer->start();
        const MessageEntries entries = listMessages(path.toStdString());
        writer->wait();
        QVERIFY(entries.hasValue());
        QCOMPARE(loaded(entries), small);
    }

    void pipeWhoseWriterComesLate()
    {
        const QByteArray path = m_folder.filePath("late").toLocal8Bit();
        QCOMPARE(::mkfifo(path.constData(), 0600), 0);
        QByteArray source;
        const QScopedPointer<QThread> reader(QThread::create([&source, path] {
            const MessageEntries entries = listMessages(path.toStdString());
            source = entries ? loaded(entries) : QByteArray::fromStdString(entries.error().text);
        }));
        reader->start();
        int writer = -1;
        const auto hasOpened = [&writer, &path] {
            writer = ::open(path.constData(), O_WRONLY | O_NONBLOCK | O_CLOEXEC); // Refused while nobody reads.
            return writer >= 0;
        };
        QVERIFY(QTest::qWaitFor(hasOpened));
        QCOMPARE(::write(writer, small.constData(), static_cast<std::size_t>(small.size())), small.size());
        ::close(writer);
        QVERIFY(reader->wait(30000));
        QCOMPARE(source, small);
    }

    void silentPipeCanBeStopped_data()
    {
        QTest::addColumn<bool>("hasWriter");
        QTest::newRow("silent") << true;
        QTest::newRow("unwritten") << false;
    }

    void silentPipeCanBeStopped()
    {
        QFETCH(bool, hasWriter);
        const QByteArray path = m_folder.filePath(QTest::currentDataTag()).toLocal8Bit();
        QCOMPARE(::mkfifo(path.constData(), 0600), 0);
        QFile holder(QString::fromLocal8Bit(path)); // A writer that is there, so that no end of input comes.
        QVERIFY(!hasWriter || holder.open(QIODevice::ReadWrite | QIODevice::Unbuffered));
        std::stop_source stop;
        std::optional<MailFailure> failure;
        const QScopedPointer<QThread> reader(QThread::create([&failure, path, token = stop.get_token()] {
            const MessageEntries entries = listMessages(path.toStdString(), token);
            failure = entries ? std::nullopt : std::optional(entries.error());
        }));
        reader->start();
        stop.request_stop();
        const bool ended = reader->wait(30000);
        if (!ended) {
            QFile release(QString::fromLocal8Bit(path)); // Lets a reader go that still waits for a writer.
            QVERIFY(release.open(QIODevice::ReadWrite | QIODevice::Unbuffered));
            reader->wait();
        }
        QVERIFY(ended);
        QCOMPARE(failure.value().kind, MailFailure::Kind::Stopped);
    }
};

QTEST_GUILESS_MAIN(MessagePipeTest)
#include "MessagePipeTest.moc"
