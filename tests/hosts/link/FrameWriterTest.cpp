#include "hosts/link/Frame.h"
#include "hosts/link/LinkPipe.h"

#include <QTest>

#include <csignal>
#include <thread>

using namespace quillmate;

class FrameWriterTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { std::signal(SIGPIPE, SIG_IGN); }
    void writes_data();
    void writes();
    void writesTooLarge();
    void writesFromManyThreads();
    void nobodyReads();
};

void FrameWriterTest::writes_data()
{
    QTest::addColumn<int>("size");
    QTest::newRow("empty") << 0;
    QTest::newRow("short") << 12;
    QTest::newRow("longer than the pipe") << 200'000;
    QTest::newRow("the longest") << (1 << 20) - 4;
}

void FrameWriterTest::writes()
{
    QFETCH(const int, size);
    const std::string body(static_cast<std::size_t>(size), 'x');
    for (const bool blocking : {true, false}) {
        Pipe pipe;
        ::fcntl(pipe.input(), F_SETFL, blocking ? 0 : O_NONBLOCK);
        bool written = false;
        std::jthread writing([&] {
            FrameWriter writer(pipe.input());
            written = writer.write(body);
            pipe.closeInput();
        });
        FrameReader reader(pipe.output(), -1);
        QCOMPARE(readAll(reader), (QStringList{"frame: " + QString::fromStdString(body), "end"}));
        writing.join();
        QVERIFY(written);
    }
}

void FrameWriterTest::writesTooLarge()
{
    Pipe pipe;
    FrameWriter writer(pipe.input());
    QVERIFY(!writer.write(std::string((1 << 20) - 3, 'x')));
    QVERIFY(writer.write("next")); // Nothing of the other one stands before it.
    pipe.closeInput();
    FrameReader reader(pipe.output(), -1);
    QCOMPARE(readAll(reader), (QStringList{"frame: next", "end"}));
}

void FrameWriterTest::writesFromManyThreads()
{
    Pipe pipe;
    FrameWriter writer(pipe.input());
    constexpr int each = 50;
    std::jthread writing([&] {
        {
            std::vector<std::jthread> writers;
            for (const char letter : {'a', 'b', 'c'}) {
                writers.emplace_back([&writer, letter] {
                    for (int i = 0; i < each; ++i) {
                        writer.write(std::string(10'000, letter));
                    }
                });
            }
        }
        pipe.closeInput();
    });
    FrameReader reader(pipe.output(), -1);
    auto seen = readAll(reader);
    QCOMPARE(seen.takeLast(), QStringLiteral("end"));
    QCOMPARE(seen.size(), 3 * each);
    for (const QString& frame : seen) {
        QCOMPARE(frame, "frame: " + QString(10'000, frame.back()));
    }
}

void FrameWriterTest::nobodyReads()
{
    Pipe pipe;
    pipe.closeOutput();
    FrameWriter writer(pipe.input());
    QVERIFY(!writer.write("lost"));
}

QTEST_GUILESS_MAIN(FrameWriterTest)
#include "FrameWriterTest.moc"
