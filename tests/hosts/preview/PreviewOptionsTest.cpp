#include "hosts/preview/PreviewOptions.h"
#include "hosts/startup/LocalService.h"
#include "state/APIManager.h"
#include "support/TestProgram.h"

#include <QCoreApplication>

using namespace quillmate;

namespace
{

Result<PreviewOptions, std::string> parsed(const QByteArray& line)
{
    const QList<QByteArray> words = line.isEmpty() ? QList<QByteArray>() : line.split(' ');
    CommandLine read(previewOptions());
    if (const auto done = read.read(std::vector<std::string_view>(words.begin(), words.end())); !done) {
        return Failure(done.error());
    }
    return PreviewOptions::from(read);
}

} // namespace

class PreviewOptionsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void accepted()
    {
        using Service = ServiceChoice;
        const struct {
            const char* line;
            PreviewOptions options;
        } cases[] = {
            {"", {}},
            {"a.eml -", {.messages = {"a.eml", "-"}}},
            {"--service remote a.eml", {.service = Service::Remote, .messages = {"a.eml"}}},
            {"--reply 2 box", {.reply = 2, .messages = {"box"}}},
            {"box --reply=12", {.reply = 12, .messages = {"box"}}},
            {"--new", {.newMessage = true}},
            {"--screenshot x.png", {.screenshotFile = "x.png"}},
            {"-- --new --help", {.messages = {"--new", "--help"}}},
            {"J\xfcrgen.eml", {.messages = {"J\xfcrgen.eml"}}},
        };
        for (const auto& item : cases) {
            const auto options = parsed(item.line);
            QVERIFY2(options.hasValue(), item.line);
            QVERIFY2(options.value() == item.options, item.line);
        }
    }

    void refused()
    {
        const std::pair<QByteArray, QByteArray> rows[] = {
            {"--new=1", "\"--new=1\""},
            {"--screenshot --new", "--screenshot needs a value"},
            {"--reply", "--reply needs a value"},
            {"-reply 1", "\"-reply\" is unknown"},
            {"--service cloud", "\"cloud\""},
            {"--screenshot=", "--screenshot"},
            {"--reply= a.eml", "\"\""},
            {"a.eml  b.eml", "empty"},
            {"--reply 0 a.eml", "\"0\""},
            {"--reply 2x a.eml", "\"2x\""},
            {"--reply 99999999999 a.eml", "\"99999999999\""},
            {"--reply 1", "--reply"},
            {"--reply 1 --new a.eml", "--new"},
        };
        for (const auto& [line, named] : rows) {
            const auto options = parsed(line);
            QVERIFY2(!options, line.constData());
            const auto sentence = QByteArray::fromStdString(options.error());
            QVERIFY2(sentence.contains(named) && !sentence.contains('\n'), sentence.constData());
        }
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
        const NetworkEnvironment whole = withServiceAt(environment, {"127.0.0.1", 1}, "ca.pem");
        QCOMPARE(whole.connectTo.size(), serviceEnvironments().size());
        QCOMPARE(whole.rootCertificateFiles, std::vector<std::string>{"ca.pem"});

        const std::string host = whole.connectTo.begin()->first;
        environment.connectTo[host] = {"192.0.2.1", 443};
        const NetworkEnvironment mixed = withServiceAt(environment, {"127.0.0.1", 1}, "ca.pem");
        QVERIFY(mixed.connectTo.at(host) == (SocketEndpoint{"192.0.2.1", 443}));
        QCOMPARE(mixed.connectTo.size(), whole.connectTo.size());

        environment.connectTo["elsewhere.example"] = {"192.0.2.2", 443};
        const NetworkEnvironment freed = withoutServiceRoutes(environment);
        QVERIFY(freed.connectTo == (std::map<std::string, SocketEndpoint>{{"elsewhere.example", {"192.0.2.2", 443}}}));
    }
};

QUILLMATE_TEST(PreviewOptionsTest, QCoreApplication)
#include "PreviewOptionsTest.moc"
