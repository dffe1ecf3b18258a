#include "hosts/link/Frame.h"
#include "hosts/link/LinkPipe.h"

#include <QFile>
#include <QTest>

#include <csignal>
#include <fcntl.h>
#include <sys/eventfd.h>
#include <thread>
#include <unistd.h>

using namespace quillmate;

class FrameTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { std::signal(SIGPIPE, SIG_IGN); }
    void reads_data();
    void reads();
    void readsByteByByte();
    void readsLargeFrames();
    void refusesTooLong();
    void takesNoMemoryForALength();
    void stops_data();
    void stops();
    void unreadable();
};

namespace
{

/// The most memory this process has held so far, in KiB.
qint64 peakMemory()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly)) {
        return -1;
    }
    for (const QByteArray& line : status.readAll().split('\n')) {
        if (line.startsWith("VmHWM:")) {
            return line.mid(6).trimmed().split(' ').front().toLongLong();
        }
    }
    return -1;
}

const auto insideFrame = QStringLiteral("broken: the input ended inside a frame");

} // namespace

void FrameTest::reads_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QStringList>("seen");
    const auto row = [](const char* name, const std::string& bytes, const QStringList& seen) {
        QTest::newRow(name) << QByteArray::fromStdString(bytes) << seen;
    };
    row("nothing", "", {"end"});
    row("one", framed("one"), {"frame: one", "end"});
    row("two at once", framed("one") + framed("two"), {"frame: one", "frame: two", "end"});
    row("an empty one between", framed("one") + framed("") + framed("two"),
        {"frame: one", "frame: ", "frame: two", "end"});
    row("end inside a length", framed("one") + "\x03", {"frame: one", insideFrame});
    row("end one byte before a length is whole", std::string("\x03\0\0", 3), {insideFrame});
    row("end before a body", prefix(3), {insideFrame});
    row("end inside a body", framed("one") + prefix(3) + "tw", {"frame: one", insideFrame});
}

void FrameTest::reads()
{
    QFETCH(const QByteArray, bytes);
    QFETCH(const QStringList, seen);
    Pipe pipe;
    pipe.write(bytes.toStdString());
    pipe.closeInput();
    FrameReader reader(pipe.output(), -1);
    QCOMPARE(readAll(reader), seen);
}

void FrameTest::readsByteByByte()
{
    Pipe pipe;
    std::jthread writer([&pipe] {
        for (const char byte : framed("one") + framed("two")) {
            pipe.write(std::string(1, byte));
            std::this_thread::yield();
        }
        pipe.closeInput();
    });
    FrameReader reader(pipe.output(), -1);
    QCOMPARE(readAll(reader), (QStringList{"frame: one", "frame: two", "end"}));
}

void FrameTest::readsLargeFrames()
{
    // Around the steps in which memory is taken.
    for (const std::size_t size : {4UL << 20, (4UL << 20) + 1, 25'000'003UL}) {
        std::string body(size, 'x');
        body.front() = 'a';
        body[size / 2] = 'b';
        body.back() = 'c';
        Pipe pipe;
        std::jthread writer([&] {
            pipe.write(framed(body) + framed("next"));
            pipe.closeInput();
        });
        FrameReader reader(pipe.output(), -1);
        const auto first = reader.next();
        QVERIFY(first && first.value());
        QVERIFY(*first.value() == body);
        QCOMPARE(readAll(reader), (QStringList{"frame: next", "end"}));
    }
}

void FrameTest::refusesTooLong()
{
    for (const std::uint32_t length : {(256U << 20) + 1, 0x80000000U, 0xffffffffU}) {
        Pipe pipe;
        pipe.write(prefix(length)); // The other end stays open: nobody waits for the body.
        FrameReader reader(pipe.output(), -1);
        const auto next = reader.next();
        QVERIFY(!next);
        QVERIFY(next.error().find(std::to_string(length)) != std::string::npos);
        QVERIFY(next.error().find("268435456") != std::string::npos);
    }
}

void FrameTest::takesNoMemoryForALength()
{
    const qint64 before = peakMemory();
    QVERIFY(before > 0);
    Pipe pipe;
    std::jthread writer([&pipe] {
        pipe.write(prefix(256U << 20) + std::string(1'000'000, 'x'));
        pipe.closeInput();
    });
    FrameReader reader(pipe.output(), -1);
    QCOMPARE(readAll(reader), QStringList{insideFrame});
    QVERIFY2(peakMemory() - before < qint64(64) * 1024, QByteArray::number(peakMemory() - before).constData());
}

void FrameTest::stops_data()
{
    QTest::addColumn<QByteArray>("before");
    QTest::newRow("between frames") << QByteArray();
    QTest::newRow("inside a length") << QByteArray("\x09\0", 2);
    QTest::newRow("inside a body") << QByteArray::fromStdString(prefix(100) + "half");
}

void FrameTest::stops()
{
    QFETCH(const QByteArray, before);
    Pipe pipe;
    pipe.write(before.toStdString());
    const int stop = ::eventfd(0, EFD_CLOEXEC);
    FrameReader reader(pipe.output(), stop);
    std::jthread stopper([stop] { ::eventfd_write(stop, 1); });
    QCOMPARE(readAll(reader), QStringList{"end"});
    stopper.join();
    ::close(stop);
}

void FrameTest::unreadable()
{
    const int folder = ::open("/", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    FrameReader reader(folder, -1);
    const auto seen = readAll(reader);
    ::close(folder);
    QCOMPARE(seen.size(), 1);
    QVERIFY2(seen.front().startsWith(QStringLiteral("broken: the input cannot be read: ")), qPrintable(seen.front()));
}

QTEST_GUILESS_MAIN(FrameTest)
#include "FrameTest.moc"
