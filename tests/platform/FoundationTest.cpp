#include "platform/foundation/Bundle.h"
#include "platform/foundation/NotificationCenter.h"
#include "platform/foundation/net/NetworkEnvironment.h"
#include "platform/foundation/net/URL.h"
#include "platform/foundation/text/PrintQueue.h"
#include "platform/foundation/text/UUID.h"
#include "platform/foundation/text/print.h"
#include "support/LogCapture.h"
#include "support/ProgramRun.h"
#include "support/TestEnvironment.h"
#include "support/TestProgram.h"

#include <QCoreApplication>

#include <atomic>
#include <fcntl.h>
#include <pty.h>
#include <thread>
#include <unistd.h>

using namespace quillmate;

namespace
{

struct Observer : std::enable_shared_from_this<Observer> {
    int told = 0;
    std::function<void()> action;
    void hear()
    {
        ++told;
        if (action) {
            action();
        }
    }
};

} // namespace

class FoundationTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void printedLines()
    {
        LogCapture log;
        print("one");
        print("label", std::string("value"));
        print("", "");
        print("two\nlines");
        QCOMPARE(log.lines(), (QStringList{"one", "label value", " ", "two", "lines"}));
    }

    void aTerminalIsShownControlsAndGivenNone()
    {
        int ends[2];
        QCOMPARE(::openpty(&ends[0], &ends[1], nullptr, nullptr, nullptr), 0);
        setPrintDescriptor(ends[1]);
        print("a\x1B[31m\n\t\x7F", "\u009B\u0080\u00A0é€😀", "\x9B\xC2", "\xE2\x82");
        print("end");
        setPrintDescriptor(STDOUT_FILENO);
        QByteArray got;
        char buffer[1000];
        while (!got.endsWith("end\r\n")) {
            got.append(buffer, std::max(::read(ends[0], buffer, sizeof buffer), ssize_t{0}));
        }
        ::close(ends[0]);
        ::close(ends[1]);
        QCOMPARE(got, QByteArray("a\\x1B[31m\\x0A\\x09\\x7F \\x9B\\x80\u00A0é€😀 \\x9B\\xC2 \\xE2\\x82\r\nend\r\n"));
    }

    void theJournalGetsNoPrivateLine()
    {
        LogCapture log;
        const auto printed = [&log](const QByteArray& stream) {
            qputenv("JOURNAL_STREAM", stream);
            print("plain");
            printPrivate("token", "secret");
            return log.take();
        };
        const QStringList all{"plain", "token secret"};
        QCOMPARE(printed(log.stream()), QStringList{"plain"});
        QCOMPARE(printed(log.stream() + '0'), all);
        QCOMPARE(printed(""), all);
        qunsetenv("JOURNAL_STREAM");
    }

    void aQueueWaitsForNoReader()
    {
        int ends[2];
        QCOMPARE(::pipe2(ends, O_CLOEXEC), 0);
        constexpr qsizetype length = 100'000;
        QByteArray got;
        std::atomic<qsizetype> taken = 0;
        std::jthread reader;
        {
            const PrintQueue queue(ends[1]);
            for (char name = 'a'; name <= 'z'; ++name) {
                print(std::string(length, name));
                print(std::string(length, name));
            }
            print(std::string(PrintQueue::limit, 'x'));
            reader = std::jthread([&, from = ends[0]] {
                char buffer[5000];
                while (!got.endsWith("end\n")) {
                    got.append(buffer, std::max(::read(from, buffer, sizeof buffer), ssize_t{0}));
                    taken = got.size();
                }
            });
            // There is room again as soon as some lines are out.
            QVERIFY(QTest::qWaitFor([&] { return taken > 3 * length; }));
            print("end");
        }
        setPrintDescriptor(STDOUT_FILENO);
        reader.join();
        ::close(ends[0]);
        ::close(ends[1]);
        const QByteArrayList lines = got.chopped(1).split('\n');
        constexpr qsizetype kept = qsizetype(PrintQueue::limit) / (length + 1);
        QCOMPARE(lines.size(), kept + 2);
        for (qsizetype i = 0; i < kept; ++i) {
            QVERIFY(lines[i] == QByteArray(length, static_cast<char>('a' + i / 2)));
        }
        QVERIFY2(lines[kept].contains(QByteArray::number(53 - kept)), lines[kept]);
    }

    /// Through a pipe that takes a part at a time, and does not block its writers.
    void printedLinesOfManyThreads()
    {
        int ends[2];
        QCOMPARE(::pipe2(ends, O_NONBLOCK | O_CLOEXEC), 0);
        setPrintDescriptor(ends[1]);
        constexpr int each = 20;
        constexpr qsizetype length = 100'000;
        std::vector<std::jthread> threads;
        for (char name = 'a'; name < 'e'; ++name) {
            threads.emplace_back([text = std::string(length, name)] {
                for (int i = 0; i < each; ++i) {
                    print(text, text);
                }
            });
        }
        QByteArray got;
        char buffer[5000];
        while (got.size() < 4 * each * (2 * length + 2)) {
            got.append(buffer, std::max(::read(ends[0], buffer, sizeof buffer), ssize_t{0}));
        }
        threads.clear();
        setPrintDescriptor(STDOUT_FILENO);
        ::close(ends[0]);
        ::close(ends[1]);
        for (const QByteArray& line : got.chopped(1).split('\n')) {
            const QByteArray half(length, line.front());
            QVERIFY(line == half + ' ' + half);
        }
    }

    void urls()
    {
        const struct {
            const char* text;
            bool url;
            bool absolute;
        } rows[] = {
            {"HTTPS://u:p@h:80/p;x=1/%C3%A9?q=a/b?c#f/?", true, true},
            {"https://[::1]:8443/", true, true},
            {"mailto:a@b.example", true, false},
            {"path/../x", true, false},
            {"", false, false},
            {" https://h", false, false},
            {"https://h/a b", false, false},
            {"https://h/%4g", false, false},
            // These QUrl would let pass.
            {"https://h/\xc3\xa9", false, false},
            {"https://h/\x7f", false, false},
            {"https://h/[a]", false, false},
            {"https://h/?a]", false, false},
            {"https://h#a#b", false, false},
        };
        for (const auto& row : rows) {
            QVERIFY2(URL::parse(row.text).has_value() == row.url, row.text);
            QVERIFY2(URL::parseAbsolute(row.text).has_value() == row.absolute, row.text);
        }
        const URL url = URL::parse("HTTPS://User:p@Mail.EXAMPLE:8443/a?b#c").value();
        QCOMPARE(url.absoluteString(), std::string("HTTPS://User:p@Mail.EXAMPLE:8443/a?b#c"));
        QCOMPARE(url.scheme(), std::string("https"));
        QCOMPARE(url.host(), std::string("mail.example"));
        QCOMPARE(url.effectivePort(), 8443);
        QCOMPARE(URL::parse("https://[::1]/")->host(), std::string("::1"));
        QCOMPARE(URL::parse("https://h:/")->effectivePort(), 443);
        QCOMPARE(url.withQueryItem("a b", "1&2=é~").absoluteString(),
                 std::string("HTTPS://User:p@Mail.EXAMPLE:8443/a?a%20b=1%262%3D%C3%A9~#c"));
        QCOMPARE(URL::parse("https://h/a")->withQueryItem("b", "").absoluteString(), std::string("https://h/a?b="));
        QCOMPARE(url.resolving("../x?y")->absoluteString(), std::string("https://User:p@mail.example:8443/x?y"));
        QVERIFY(!url.resolving("a b"));
    }

    void uuids()
    {
        const std::string text = "01234567-89AB-CDEF-0123-456789abcdef";
        QCOMPARE(UUID::parse(text)->uuidString(), std::string("01234567-89AB-CDEF-0123-456789ABCDEF"));
        QVERIFY(UUID::parse("00000000-0000-0000-0000-000000000000"));
        for (const std::string& other : {std::string(), "{" + text + "}", text.substr(1), text + "0",
                                         std::string("0123456-789AB-CDEF-0123-456789abcdef"), "g" + text.substr(1)}) {
            QVERIFY2(!UUID::parse(other), other.c_str());
        }
        QVERIFY(!(UUID::random() == UUID::random()));
    }

    void notifications()
    {
        NotificationCenter center;
        const auto observer = std::make_shared<Observer>();
        auto passing = std::make_shared<Observer>();
        center.addObserver(observer, &Observer::hear, "a");
        center.addObserver(observer, &Observer::hear, "b");
        center.addObserver(passing, &Observer::hear, "a");
        center.post("a");
        center.post("c");
        QCOMPARE(observer->told, 1);
        QCOMPARE(passing->told, 1);
        passing.reset(); // without a word
        std::thread([&] { center.post("a"); }).join();
        center.post("b");
        QCOMPARE(observer->told, 3);
        center.removeObserver(observer.get());
        center.post("a");
        QCOMPARE(observer->told, 3);
    }

    void observersThatComeAndGo()
    {
        NotificationCenter center;
        const auto leaver = std::make_shared<Observer>();
        const auto left = std::make_shared<Observer>();
        const auto joined = std::make_shared<Observer>();
        auto freed = std::make_shared<Observer>();
        leaver->action = [&] {
            center.removeObserver(left.get());
            center.removeObserver(leaver.get());
            center.addObserver(joined, &Observer::hear, "a");
            freed.reset();
        };
        for (const auto& observer : {leaver, left, freed}) {
            center.addObserver(observer, &Observer::hear, "a");
        }
        center.post("a");
        QCOMPARE(leaver->told, 1);
        QCOMPARE(left->told, 0);
        QCOMPARE(joined->told, 0); // not for the one that was being told
        center.post("a");
        QCOMPARE(leaver->told, 1);
        QCOMPARE(joined->told, 1);
    }

    void networkEnvironment()
    {
        using Routes = std::map<std::string, SocketEndpoint>;
        QVERIFY(NetworkEnvironment::fromValues(nullptr, nullptr).value() == NetworkEnvironment());
        QVERIFY(NetworkEnvironment::fromValues("", "").value() == NetworkEnvironment());
        QVERIFY(NetworkEnvironment::fromValues("a=localhost:1,B.example=[::1]:65535", nullptr).value().connectTo ==
                (Routes{{"a", {"localhost", 1}}, {"b.example", {"::1", 65535}}}));
        for (const std::string wrong :
             {"a.example", "a.example=", "a.example=127.0.0.1", "=127.0.0.1:1", "a.example=127.0.0.1:0",
              "a.example=127.0.0.1:65536", "a.example=127.0.0.1:1,", ",a.example=127.0.0.1:1",
              "https://a.example=127.0.0.1:1", "a.example=::1:1", "a.example=[::x]:1", "a b=127.0.0.1:1", "."}) {
            const auto refused = NetworkEnvironment::fromValues(wrong.c_str(), nullptr);
            QVERIFY2(!refused, wrong.c_str());
            QVERIFY(refused.error().find("QUILLMATE_CONNECT_TO is \"" + wrong) == 0);
        }
        for (const char* file : {"/nowhere/ca.pem", "/proc/self/maps"}) {
            const auto refused = NetworkEnvironment::fromValues(nullptr, file);
            QVERIFY(!refused);
            QVERIFY(refused.error().find("QUILLMATE_CA_FILE") != std::string::npos);
        }
        const auto root = TestEnvironment::certificateFile(QStringLiteral("ca.pem")).toStdString();
        QCOMPARE(NetworkEnvironment::fromValues(nullptr, root.c_str()).value().rootCertificateFiles,
                 std::vector<std::string>{root});
    }

    void bundle()
    {
        QCOMPARE(Bundle::main().object("CFBundleShortVersionString"), std::optional(builtVersion().toStdString()));
        QCOMPARE(Bundle::main().object("missing"), std::nullopt);
        QCOMPARE(Bundle::main().contents("missing", "json"), std::nullopt);
        QCOMPARE(Bundle::main().url("missing", "json"), std::nullopt);
    }
};

QUILLMATE_TEST(FoundationTest, QCoreApplication)
#include "FoundationTest.moc"
