#include "hosts/preview/PreviewOptions.h"
#include "hosts/preview/LocalService.h"
#include "hosts/preview/ServiceRoutes.h"

#include <QTest>

using namespace quillmate;

namespace
{

Result<PreviewOptions, std::string> parsed(const QByteArray& line)
{
    const QList<QByteArray> words = line.isEmpty() ? QList<QByteArray>() : line.split(' ');
    const std::vector<std::string_view> arguments(words.begin(), words.end());
    return PreviewOptions::parse(arguments);
}

} // namespace

class PreviewOptionsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void accepted()
    {
        using Task = PreviewOptions::Task;
        using Service = PreviewOptions::Service;
        const struct {
            const char* line;
            PreviewOptions options;
        } cases[] = {
            {"", {}},
            {"a.eml -", {.messages = {"a.eml", "-"}}},
            {"--service remote a.eml", {.service = Service::Remote, .messages = {"a.eml"}}},
            {"--service=local", {.service = Service::Local}},
            {"--screenshot=--x.png", {.screenshotFile = "--x.png"}},
            {"--reply 2 box", {.reply = 2, .messages = {"box"}}},
            {"box --reply=12", {.reply = 12, .messages = {"box"}}},
            {"--new", {.newMessage = true}},
            {"--screenshot x.png", {.screenshotFile = "x.png"}},
            {"-- --new -x", {.messages = {"--new", "-x"}}},
            {"--help --nonsense", {.task = Task::Help}},
            {"--version", {.task = Task::Version}},
        };
        for (const auto& item : cases) {
            const auto options = parsed(item.line);
            QVERIFY2(options.hasValue(), item.line);
            QVERIFY2(options.value() == item.options, item.line);
        }
    }

    void refused_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<QByteArray>("named");

        const auto row = [](const char* line, const char* named) {
            QTest::newRow(line) << QByteArray(line) << QByteArray(named);
        };
        row("--nonsense", "\"--nonsense\"");
        row("-x", "\"-x\"");
        row("--new=1", "\"--new=1\"");
        row("--service cloud", "\"cloud\"");
        row("--service", "--service");
        row("--screenshot", "--screenshot");
        row("--screenshot=", "--screenshot");
        row("--screenshot --new", "--screenshot needs a value");
        row("--service --new", "--service needs a value");
        row("--reply", "--reply needs a value");
        row("--reply --new", "--reply needs a value");
        row("--reply= a.eml", "\"\"");
        row("a.eml  b.eml", "empty");
        row("--reply x a.eml", "\"x\"");
        row("--reply 0 a.eml", "\"0\"");
        row("--reply 2x a.eml", "\"2x\"");
        row("--reply 99999999999 a.eml", "\"99999999999\"");
        row("--reply 1", "--reply");
        row("--reply 1 --new a.eml", "--new");
    }

    void refused()
    {
        QFETCH(QByteArray, line);
        QFETCH(QByteArray, named);
        const auto options = parsed(line);
        QVERIFY(!options);
        QVERIFY2(QByteArray::fromStdString(options.error()).contains(named), options.error().c_str());
        QVERIFY(!QByteArray::fromStdString(options.error()).contains('\n'));
    }

    void listeningLine()
    {
        const struct {
            const char* line;
            SocketEndpoint endpoint;
        } cases[] = {
            {"quillmate-service listening on https://127.0.0.1:4711", {"127.0.0.1", 4711}},
            {"quillmate-service listening on https://127.0.0.1:4711\r", {"127.0.0.1", 4711}},
            {"quillmate-service listening on https://[::1]:80", {"::1", 80}},
            {"quillmate-service listening on http://127.0.0.1:4711", {}},
            {"quillmate-service listening on https://127.0.0.1", {}},
            {"quillmate-service listening on https://127.0.0.1:70000", {}},
            {"listening on https://127.0.0.1:4711", {}},
        };
        for (const auto& item : cases) {
            QVERIFY2(listeningEndpoint(item.line) == item.endpoint, item.line);
        }
    }

    void environmentStandsAboveTheService()
    {
        NetworkEnvironment environment;
        QVERIFY(!routesAllServiceHosts(environment));
        const NetworkEnvironment whole = withServiceAt(environment, {"127.0.0.1", 1}, "ca.pem");
        QVERIFY(routesAllServiceHosts(whole));
        QCOMPARE(whole.rootCertificateFiles, std::vector<std::string>{"ca.pem"});

        const std::string host = whole.connectTo.begin()->first;
        environment.connectTo[host] = {"192.0.2.1", 443};
        const NetworkEnvironment mixed = withServiceAt(environment, {"127.0.0.1", 1}, "ca.pem");
        QVERIFY(!routesAllServiceHosts(environment));
        QVERIFY(mixed.connectTo.at(host) == (SocketEndpoint{"192.0.2.1", 443}));
        QCOMPARE(mixed.connectTo.size(), whole.connectTo.size());

        environment.connectTo["elsewhere.example"] = {"192.0.2.2", 443};
        const NetworkEnvironment freed = withoutServiceRoutes(environment);
        QVERIFY(freed.connectTo == (std::map<std::string, SocketEndpoint>{{"elsewhere.example", {"192.0.2.2", 443}}}));
    }
};

QTEST_GUILESS_MAIN(PreviewOptionsTest)
#include "PreviewOptionsTest.moc"
