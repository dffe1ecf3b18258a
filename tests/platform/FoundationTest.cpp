#include "platform/foundation/Bundle.h"
#include "platform/foundation/NetworkEnvironment.h"
#include "platform/foundation/NotificationCenter.h"
#include "platform/foundation/URL.h"
#include "platform/foundation/print.h"
#include "support/LogCapture.h"
#include "support/TestEnvironment.h"

#include <QTest>

#include <fcntl.h>
#include <thread>
#include <unistd.h>

using namespace quillmate;

class FoundationTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void printedLines();
    void printedLinesOfManyThreads();
    void printingToASlowReader();
    void urls_data();
    void urls();
    void urlParts();
    void urlResolution();
    void notifications();
    void observersThatComeAndGo();
    void networkEnvironment_data();
    void networkEnvironment();
    void bundle();
};

void FoundationTest::printedLines()
{
    LogCapture log;
    print("one");
    print("label", std::string("value"));
    print("", "");
    print("two\nlines");
    QCOMPARE(log.lines(), (QStringList{"one", "label value", " ", "two", "lines"}));
}

void FoundationTest::printedLinesOfManyThreads()
{
    LogCapture log;
    std::vector<std::thread> threads;
    for (char name = 'a'; name < 'e'; ++name) {
        threads.emplace_back([name] {
            const std::string text(3000, name);
            for (int i = 0; i < 200; ++i) {
                print(text, text);
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    const QStringList lines = log.lines();
    QCOMPARE(lines.size(), 800);
    for (const QString& line : lines) {
        const QString half(3000, line.front());
        QCOMPARE(line, half + QLatin1Char(' ') + half);
    }
}

void FoundationTest::printingToASlowReader()
{
    // A pipe that takes a part at a time, and does not block its writer.
    int ends[2];
    QCOMPARE(::pipe2(ends, O_NONBLOCK | O_CLOEXEC), 0);
    setPrintDescriptor(ends[1]);
    const std::string text(1'000'000, 'x');
    std::thread writer([&] { print(text, "end"); });
    std::string got;
    char buffer[5000];
    while (got.size() < text.size() + 5) {
        if (const auto count = ::read(ends[0], buffer, sizeof buffer); count > 0) {
            got.append(buffer, static_cast<std::size_t>(count));
        }
    }
    writer.join();
    setPrintDescriptor(STDOUT_FILENO);
    QVERIFY(got == text + " end\n");
    ::close(ends[0]);
    ::close(ends[1]);
}

void FoundationTest::urls_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<bool>("url");
    QTest::addColumn<bool>("absolute");
    const auto row = [](const char* text, bool url, bool absolute) {
        QTest::newRow(text) << QByteArray(text) << url << absolute;
    };
    row("https://quillmate.example/api/v1/me", true, true);
    row("HTTPS://u:p@h:80/p;x=1/%C3%A9?q=a/b?c#f/?", true, true);
    row("https://h", true, true);
    row("https://h:", true, true);
    row("https://[::1]:8443/", true, true);
    row("https://[v1.a:b]/", true, true);
    row("a+b-c.d://h", true, true);
    row("https://h/a'b(c)*,;=!$&@:", true, true);
    row("mailto:a@b.example", true, false);
    row("file:///etc/passwd", true, false);
    row("/path", true, false);
    row("path/../x", true, false);
    row("?q", true, false);
    row("#f", true, false);
    row("//h/p", true, false);
    row("1http://h", false, false);
    row("", false, false);
    row(" https://h", false, false);
    row("https://h/a b", false, false);
    row("https://h/\"", false, false);
    row("https://h/<a>", false, false);
    row("https://h/%", false, false);
    row("https://h/%4", false, false);
    row("https://h/%4g", false, false);
    row("https://h/\xc3\xa9", false, false);
    row("https://h\\x", false, false);
    row("https://h/[a]", false, false);
    row("https://h/a^b|c`{d}", false, false);
    row("https://h#a#b", false, false);
    row("https://h:65536/", false, false);
    row("https://h:8a/", false, false);
    row("https://[::1", false, false);
    row("https://[::zz]/", false, false);
    row("https://h\n/", false, false);
    row(":", false, false);
}

void FoundationTest::urls()
{
    QFETCH(const QByteArray, text);
    QFETCH(const bool, url);
    QFETCH(const bool, absolute);
    const auto parsed = URL::parse(text.toStdString());
    QCOMPARE(parsed.has_value(), url);
    QCOMPARE(URL::parseAbsolute(text.toStdString()).has_value(), absolute);
    if (parsed) {
        QCOMPARE(parsed->absoluteString(), text.toStdString());
    }
}

void FoundationTest::urlParts()
{
    const URL url = URL::parse("HTTPS://User:p@Mail.EXAMPLE:8443/a?b#c").value();
    QCOMPARE(url.scheme(), std::string("https"));
    QCOMPARE(url.host(), std::string("mail.example"));
    QCOMPARE(url.port(), std::optional(8443));
    QCOMPARE(URL::parse("https://[::1]/")->host(), std::string("::1"));
    QCOMPARE(URL::parse("https://h:/")->port(), std::nullopt);
    QCOMPARE(url.withQueryItem("a b", "1&2=é~").absoluteString(),
             std::string("HTTPS://User:p@Mail.EXAMPLE:8443/a?a%20b=1%262%3D%C3%A9~#c"));
}

void FoundationTest::urlResolution()
{
    const URL base = URL::parse("https://a.example:444/b/c?d#e").value();
    const std::vector<std::pair<std::string, std::string>> table = {
        {"f", "https://a.example:444/b/f"},
        {"/f?g", "https://a.example:444/f?g"},
        {"//h/i", "https://h/i"},
        {"http://h/", "http://h/"},
        {"../../x", "https://a.example:444/x"},
        {"?y", "https://a.example:444/b/c?y"},
    };
    for (const auto& [reference, resolved] : table) {
        QCOMPARE(base.resolving(reference)->absoluteString(), resolved);
    }
    QVERIFY(!base.resolving("a b"));
}

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

void FoundationTest::notifications()
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

void FoundationTest::observersThatComeAndGo()
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

void FoundationTest::networkEnvironment_data()
{
    QTest::addColumn<QByteArray>("connectTo");
    QTest::addColumn<int>("hosts"); // -1: refused
    QTest::newRow("unset") << QByteArray() << 0;
    QTest::newRow("empty") << QByteArray("") << 0;
    QTest::newRow("one") << QByteArray("a.example=127.0.0.1:8443") << 1;
    QTest::newRow("two") << QByteArray("a.example=127.0.0.1:1,B.example=[::1]:65535") << 2;
    QTest::newRow("a name for an address") << QByteArray("a=localhost:1") << 1;
    for (const char* wrong :
         {"a.example", "a.example=", "a.example=127.0.0.1", "a.example=127.0.0.1:", "=127.0.0.1:1",
          "a.example=127.0.0.1:0", "a.example=127.0.0.1:65536", "a.example=127.0.0.1:1,", ",a.example=127.0.0.1:1",
          "https://a.example=127.0.0.1:1", "a.example=::1:1", "a.example=[::x]:1", "a.example=127.0.0.1:1 ",
          "a b=127.0.0.1:1", "a.example=1:2:3", "."}) {
        QTest::newRow(wrong) << QByteArray(wrong) << -1;
    }
}

void FoundationTest::networkEnvironment()
{
    QFETCH(const QByteArray, connectTo);
    QFETCH(const int, hosts);
    const auto environment =
        NetworkEnvironment::fromValues(connectTo.isNull() ? nullptr : connectTo.constData(), nullptr);
    QCOMPARE(environment.hasValue(), hosts >= 0);
    if (environment) {
        QCOMPARE(environment.value().connectTo.size(), static_cast<std::size_t>(hosts));
        QCOMPARE(environment.value().connectTo.contains("b.example"), hosts == 2);
    } else {
        const QString sentence = QString::fromStdString(environment.error());
        QVERIFY(sentence.contains(QLatin1String("QUILLMATE_CONNECT_TO")));
        QVERIFY(sentence.contains(QString::fromLatin1(connectTo)));
        QVERIFY(!sentence.contains(QLatin1Char('\n')));
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

void FoundationTest::bundle()
{
    QCOMPARE(Bundle::main().object("CFBundleShortVersionString"),
             std::optional<std::string>(QUILLMATE_PROJECT_VERSION));
    QCOMPARE(Bundle::main().object("missing"), std::nullopt);
    QCOMPARE(Bundle::main().contents("missing", "json"), std::nullopt);
    QCOMPARE(Bundle::main().url("missing", "json"), std::nullopt);
}

QTEST_GUILESS_MAIN(FoundationTest)
#include "FoundationTest.moc"
