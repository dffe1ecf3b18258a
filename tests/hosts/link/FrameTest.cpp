#include "hosts/link/Frame.h"
#include "support/TestProgram.h"

#include <QCoreApplication>
#include <QStringList>

#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <sys/eventfd.h>
#include <sys/resource.h>
#include <thread>
#include <unistd.h>

using namespace quillmate;

namespace
{

class Pipe
{
public:
    Pipe()
    {
        if (::pipe2(m_ends, O_CLOEXEC) != 0) {
            qFatal("There is no pipe to be had.");
        }
    }
    ~Pipe()
    {
        end(m_ends[0]);
        closeInput();
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    [[nodiscard]] int output() const { return m_ends[0]; }
    [[nodiscard]] int input() const { return m_ends[1]; }
    void closeInput() { end(m_ends[1]); }
    void closeOutput() { end(m_ends[0]); }
    void write(const std::string& bytes) const
    {
        for (std::size_t done = 0; done < bytes.size();) {
            const ssize_t count = ::write(m_ends[1], bytes.data() + done, bytes.size() - done);
            if (count < 0) {
                return; // The reader has gone, which is for the test to find.
            }
            done += static_cast<std::size_t>(count);
        }
    }
    /// Everything that comes out: the frames, and how it ended.
    [[nodiscard]] QStringList readAll(int stopDescriptor = -1) const
    {
        FrameReader reader(output(), stopDescriptor);
        QStringList seen;
        for (;;) {
            const auto next = reader.next();
            if (!next) {
                return seen << "broken: " + QString::fromStdString(next.error());
            }
            if (!next.value()) {
                return seen << QStringLiteral("end");
            }
            seen << "frame: " + QString::fromStdString(*next.value());
        }
    }

private:
    static void end(int& descriptor)
    {
        if (descriptor >= 0) {
            ::close(descriptor);
            descriptor = -1;
        }
    }

    int m_ends[2] = {-1, -1};
};

std::string prefix(std::uint32_t length)
{
    std::string bytes(sizeof length, '\0');
    std::memcpy(bytes.data(), &length, sizeof length);
    return bytes;
}

std::string framed(const std::string& body)
{
    return prefix(static_cast<std::uint32_t>(body.size())) + body;
}

/// The most memory this process has held so far, in KiB.
long peakMemory()
{
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

const auto insideFrame = QStringLiteral("broken: the input ended inside a frame");

} // namespace

/// Frames through a pipe: what is read of any bytes, and what is written.
class FrameTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { std::signal(SIGPIPE, SIG_IGN); }
    void reads()
    {
        const struct {
            const char* name;
            std::string bytes;
            QStringList seen;
        } rows[] = {
            {"nothing", "", {"end"}},
            {"an empty one between",
             framed("one") + framed("") + framed("two"),
             {"frame: one", "frame: ", "frame: two", "end"}},
            {"end inside a length", framed("one") + std::string("\x03\0\0", 3), {"frame: one", insideFrame}},
            {"end before a body", prefix(3), {insideFrame}},
            {"end inside a body", framed("one") + prefix(3) + "tw", {"frame: one", insideFrame}},
        };
        for (const auto& row : rows) {
            for (const bool byteByByte : {false, true}) {
                Pipe pipe;
                std::jthread writer([&] {
                    for (std::size_t i = 0; byteByByte && i < row.bytes.size(); ++i) {
                        pipe.write(row.bytes.substr(i, 1));
                        std::this_thread::yield();
                    }
                    pipe.write(byteByByte ? "" : row.bytes);
                    pipe.closeInput();
                });
                QVERIFY2(pipe.readAll() == row.seen, row.name);
            }
        }
        FrameReader folder(::open("/", O_RDONLY | O_DIRECTORY | O_CLOEXEC), -1);
        const auto unreadable = folder.next();
        QVERIFY(!unreadable && unreadable.error().starts_with("the input cannot be read: "));
    }

    void readsLargeFrames()
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
            QVERIFY(first && first.value() == body);
            QCOMPARE(pipe.readAll(), (QStringList{"frame: next", "end"}));
        }
    }

    void refusesTooLong()
    {
        for (const std::uint32_t length : {(256U << 20) + 1, 0xffffffffU}) {
            Pipe pipe;
            pipe.write(prefix(length)); // The other end stays open: nobody waits for the body.
            const QString end = pipe.readAll().front();
            QVERIFY2(end.contains(QString::number(length)) && end.contains("268435456"), qPrintable(end));
        }
    }

    void takesNoMemoryForALength()
    {
        const long before = peakMemory();
        Pipe pipe;
        std::jthread writer([&pipe] {
            pipe.write(prefix(256U << 20) + std::string(1'000'000, 'x'));
            pipe.closeInput();
        });
        QCOMPARE(pipe.readAll(), QStringList{insideFrame});
        QVERIFY2(peakMemory() - before < 64L * 1024, QByteArray::number(peakMemory() - before).constData());
    }

    void stops()
    {
        for (const std::string& before : {std::string(), std::string("\x09\0", 2), prefix(100) + "half"}) {
            Pipe pipe;
            pipe.write(before);
            const int stop = ::eventfd(0, EFD_CLOEXEC);
            std::jthread stopper([stop] { ::eventfd_write(stop, 1); });
            QCOMPARE(pipe.readAll(stop), QStringList{"end"});
            stopper.join();
            ::close(stop);
        }
    }

    void writes()
    {
        constexpr int longest = (1 << 20) - 4;
        for (const int size : {0, 200'000 /* longer than the pipe */, longest, longest + 1}) {
            for (const int flags : {0, O_NONBLOCK}) {
                const std::string body(static_cast<std::size_t>(size), 'x');
                Pipe pipe;
                ::fcntl(pipe.input(), F_SETFL, flags);
                bool written = false;
                std::jthread writing([&] {
                    FrameWriter writer(pipe.input());
                    written = writer.write(body);
                    writer.write("next"); // Nothing of one that is too long stands before it.
                    pipe.closeInput();
                });
                QStringList expected{"frame: " + QString::fromStdString(body), "frame: next", "end"};
                QVERIFY(pipe.readAll() == (size > longest ? expected.mid(1) : expected));
                writing.join();
                QCOMPARE(written, size <= longest);
            }
        }
        Pipe pipe;
        pipe.closeOutput();
        QVERIFY(!FrameWriter(pipe.input()).write("lost"));
    }
};

QUILLMATE_TEST(FrameTest, QCoreApplication)
#include "FrameTest.moc"
