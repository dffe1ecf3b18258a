#include "localservice/model/OpenAiEngine.h"
#include "localservice/Certificates.h"
#include "localservice/FakeModel.h"

#include <QSslCertificate>
#include <QSslConfiguration>
#include <QSslKey>
#include <QSslServer>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <thread>

using namespace quillmate::localservice;

namespace
{

const std::string key = "sk-The.Key_of-this-test";
const std::string mail =
    "Dear Anna,\n\nthe pumps come on Thursday and not on Monday. Could you confirm the address?\n\n"
    "Kind regards\nTom\n";

/// JSON with apostrophes for its quotes.
QByteArray json(const char* text)
{
    return QByteArray(text).replace('\'', '"');
}

std::string longMail()
{
    std::string text;
    for (int count = 0; count < 400; ++count) {
        text += "The pumps of the series " + std::to_string(count) + " come on Thursday.\n";
    }
    return text;
}

/// An engine for the fake, and its log. The engine waits in an event loop of the calling thread, in which the fake
/// lives, too.
struct Asking {
    explicit Asking(const std::string& url, ModelLimits limits = {}, qsizetype context = 8192,
                    const std::string& givenKey = key)
        : engine({std::get<ModelAddress>(readModelAddress(url)), "the-model", givenKey, context, limits},
                 [this](const std::string& line) { log += line + '\n'; })
    {
    }
    std::string log;
    OpenAiEngine engine;
};

std::string textOf(const EngineText& text)
{
    const auto* written = std::get_if<std::string>(&text);
    return written != nullptr ? *written : "failed: " + std::get<EngineFailure>(text).sentence;
}

} // namespace

/// The engine against a language model's server that the test plays.
class OpenAiEngineTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aRequestHasTheFormOfTheProtocol()
    {
        FakeModel model([](const auto&) { return FakeModel::completion(QStringLiteral(" It is said. ")); });
        Asking asking(model.url());
        QCOMPARE(textOf(asking.engine.summarize(mail)), "It is said.");
        QCOMPARE(textOf(asking.engine.reply(mail, "Anna Example")), "It is said.");
        QCOMPARE(textOf(asking.engine.answer(
                     mail, {{ThreadMessage::Role::User, "Who?"}, {ThreadMessage::Role::Assistant, "Tom."}}, "When?")),
                 "It is said.");
        QCOMPARE(model.asked.size(), 3U);
        for (const FakeModel::Request& request : model.asked) {
            QCOMPARE(request.method, "POST");
            QCOMPARE(request.path, "/v1/chat/completions");
            QVERIFY(request.head.contains("Authorization: Bearer " + QByteArray::fromStdString(key) + "\r\n"));
            QVERIFY(request.head.contains("Content-Type: application/json\r\n"));
            QCOMPARE(request.json()[QStringLiteral("model")].toString(), QStringLiteral("the-model"));
            QCOMPARE(request.json()[QStringLiteral("stream")], QJsonValue(false));
            QVERIFY(request.content(-1).contains(QStringLiteral("confirm the address?")));
        }
        QVERIFY(model.asked[1].content(0).contains(QStringLiteral("Anna Example")));
        QCOMPARE(model.asked[2].content(1), QStringLiteral("Who?"));
        QCOMPARE(model.asked[2].content(2), QStringLiteral("Tom."));
        QVERIFY(model.asked[2].content(3).endsWith(QStringLiteral("When?")));
        QCOMPARE(asking.log, std::string());
        // A server that does not count what it reads is not taken to have cut it.
        FakeModel careless([](const auto&) { return FakeModel::completion(QStringLiteral("It is said."), 5); });
        QCOMPARE(textOf(Asking(careless.url()).engine.summarize(longMail())), "It is said.");
        FakeModel wary([](const auto&) { return FakeModel::http(401, "{}"); });
        QVERIFY(textOf(Asking(wary.url(), {}, 8192, "").engine.summarize(mail)).find("asks for a key") !=
                std::string::npos);
        // A message without text needs no model.
        QCOMPARE(textOf(asking.engine.summarize("")), "This message has no text that can be summarized.");
        QCOMPARE(model.asked.size(), 3U);
    }

    void theContextIsAskedFor_data()
    {
        QTest::addColumn<QByteArray>("path");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QByteArray>("logged");
        const auto row = [](const char* name, const char* path, const QByteArray& body, const char* logged) {
            QTest::newRow(name) << QByteArray(path) << body << QByteArray(logged);
        };
        row("vLLM", "/v1/models",
            json("{'data':[{'id':'other','max_model_len':99999},{'id':'the-model','max_model_len':1500}]}"),
            "1500 tokens");
        row("llama.cpp's properties", "/props", json("{'default_generation_settings':{'n_ctx':1600},'total_slots':1}"),
            "1600 tokens");
        row("llama.cpp's list", "/v1/models",
            json("{'data':[{'id':'the-model','meta':{'n_ctx':1650,'n_ctx_train':131072}}]}"), "1650 tokens");
        row("Ollama, loaded", "/api/ps", json("{'models':[{'name':'the-model:latest','context_length':1700}]}"),
            "1700 tokens");
        row("Ollama, by its parameter", "/api/show",
            json("{'parameters':'stop x\\nnum_ctx                        "
                 "1800','model_info':{'a.context_length':40960}}"),
            "1800 tokens");
        row("Ollama, trained for less", "/api/show", json("{'model_info':{'a.context_length':2048}}"), "2048 tokens");
        row("trained for more is no promise", "/api/show", json("{'model_info':{'a.context_length':40960}}"),
            "4096 tokens");
        row("nested deeply", "/v1/models", "{\"data\":" + QByteArray(300'000, '[') + QByteArray(300'000, ']') + '}',
            "4096 tokens");
        row("nonsense", "/props", json("{'default_generation_settings':{'n_ctx':-5}}"), "4096 tokens");
    }

    void theContextIsAskedFor()
    {
        QFETCH(QByteArray, path);
        QFETCH(QByteArray, body);
        QFETCH(QByteArray, logged);
        FakeModel model([](const auto&) { return FakeModel::completion(QStringLiteral("It is said.")); });
        int questions = 0;
        model.other = [&](const FakeModel::Request& request) {
            ++questions;
            const bool keyed = request.head.contains(QByteArray::fromStdString(key));
            return keyed && request.path == path ? FakeModel::http(200, body) : FakeModel::http(404, "not found");
        };
        Asking asking(model.url(), {}, 0);
        QCOMPARE(textOf(asking.engine.summarize(longMail())), "It is said.");
        QVERIFY2(QByteArray::fromStdString(asking.log).contains(logged), asking.log.c_str());
        QVERIFY2(asking.log.find("its end") != std::string::npos, asking.log.c_str());
        // A server that tells nothing may do so once the model is loaded; then it is known.
        const int all = logged == "4096 tokens" ? 2 * questions : questions;
        QCOMPARE(textOf(asking.engine.summarize(mail)), "It is said.");
        QCOMPARE(textOf(asking.engine.summarize(mail)), "It is said.");
        QCOMPARE(questions, all);
        Asking told(model.url(), {}, 100'000);
        QCOMPARE(textOf(told.engine.summarize(longMail())), "It is said.");
        QCOMPARE(questions, all);
        QCOMPARE(told.log, std::string());
    }

    void aServerThatCannotTellItsContextYetIsAskedLater_data()
    {
        QTest::addColumn<int>("before");
        QTest::addColumn<QByteArray>("logged");
        QTest::newRow("no model is loaded") << 404 << QByteArray("does not tell its context; 4096");
        QTest::newRow("it wants another key") << 401 << QByteArray("does not tell its context; 4096");
        QTest::newRow("it fails for now") << 503 << QByteArray("cannot tell its context for now; 4096");
    }

    void aServerThatCannotTellItsContextYetIsAskedLater()
    {
        QFETCH(int, before);
        QFETCH(QByteArray, logged);
        FakeModel* fake = nullptr;
        FakeModel model([](const auto&) { return FakeModel::completion(QStringLiteral("It is said.")); });
        fake = &model;
        model.other = [&](const FakeModel::Request& request) {
            const bool tells = request.path == "/api/ps" && !fake->asked.empty();
            return tells ? FakeModel::http(200, json("{'models':[{'name':'the-model','context_length':1700}]}"))
                         : FakeModel::http(before, "{}");
        };
        Asking asking(model.url(), {}, 0);
        for (int count = 0; count < 3; ++count) {
            QCOMPARE(textOf(asking.engine.summarize(mail)), "It is said.");
        }
        const QByteArray log = QByteArray::fromStdString(asking.log);
        QVERIFY2(log.contains(logged) && log.contains("has 1700 tokens, as /api/ps"), log.constData());
        QCOMPARE(log.count('\n'), 2);
    }

    void aPromptThatTheServerCutIsNoticed_data()
    {
        QTest::addColumn<QByteArray>("refusal"); // empty: cut silently
        QTest::addColumn<bool>("isChat");
        QTest::addColumn<int>("room");
        QTest::addColumn<QByteArray>("logged");
        const auto row = [](const char* name, const char* refusal, bool isChat, int room, const char* logged) {
            QTest::newRow(name) << json(refusal) << isChat << room << QByteArray(logged);
        };
        const char* silent = "takes less than the ";
        const char* counted = "{'error':{'type':'exceed_context_size_error','n_ctx':2000,'n_prompt_tokens':4700}}";
        const char* uncounted = "{'error':{'code':'context_length_exceeded'}}";
        row("silently, then not again", "", false, 2000, silent);
        row("silently in a chat", "", true, 2000, silent);
        row("silently, always", "", false, 0, silent);
        row("refused with the numbers", counted, false, 2000, "refuses the request");
        row("refused without, in a chat", uncounted, true, 2000, "refuses the request");
        row("refused, always", counted, false, 0, "refuses the request");
    }

    void aPromptThatTheServerCutIsNoticed()
    {
        QFETCH(QByteArray, refusal);
        QFETCH(bool, isChat);
        QFETCH(int, room);
        QFETCH(QByteArray, logged);
        FakeModel model([&](const FakeModel::Request& request) {
            const int tokens = static_cast<int>(request.body.size() / 4);
            return tokens <= room      ? FakeModel::completion(QStringLiteral("It is said."), tokens)
                   : refusal.isEmpty() ? FakeModel::completion(QStringLiteral("Of the piece I saw."), tokens * 3 / 8)
                                       : FakeModel::http(400, refusal);
        });
        Asking asking(model.url(), {}, 16'384);
        const auto ask = [&] {
            return isChat ? asking.engine.answer(longMail(),
                                                 {{ThreadMessage::Role::User, longMail()},
                                                  {ThreadMessage::Role::Assistant, "Thursday."}},
                                                 "When?")
                          : asking.engine.summarize(longMail());
        };
        const std::string text = textOf(ask());
        QCOMPARE(model.asked.size(), 2U);
        QVERIFY(model.asked[1].body.size() * 2 < model.asked[0].body.size());
        QVERIFY(model.asked[1].content(-1).contains(QStringLiteral("series 0")));
        QVERIFY2(asking.log.find(logged.toStdString()) != std::string::npos, asking.log.c_str());
        if (room == 0) {
            QVERIFY(text.find("takes less of a message") != std::string::npos);
            return;
        }
        QCOMPARE(text, "It is said.");
        QCOMPARE(textOf(ask()), "It is said."); // The next one is cut at once.
        QCOMPARE(model.asked.size(), 3U);
        // A line more or less, since the fence is another one.
        QVERIFY(qAbs(model.asked[2].body.size() - model.asked[1].body.size()) < 200);
    }

    void failuresAreToldInOneSentence_data()
    {
        QTest::addColumn<QByteArray>("answer");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("says");
        QTest::addColumn<int>("seconds");
        const auto row = [](const char* name, const QByteArray& answer, int status, const char* says, int seconds = 0) {
            QTest::newRow(name) << answer << status << QString::fromUtf8(says) << seconds;
        };
        const QByteArray upstream =
            json("{'error':{'message':'UPSTREAM Bearer KEY'}}").replace("KEY", QByteArray::fromStdString(key));
        const auto of = [&](int code, const QByteArray& headers = {}) {
            return FakeModel::http(code, upstream, headers);
        };
        row("key refused", of(401, "WWW-Authenticate: Basic realm=x\r\n"), 502, "QUILLMATE_OPENAI_API_KEY");
        row("key forbidden", of(403), 502, "QUILLMATE_OPENAI_API_KEY");
        row("unknown model", of(404), 502, "--openai-model");
        row("bad request", of(400), 502, "does not take the request");
        row("no credit", of(402), 502, "no credit left");
        row("no credit, after OpenAI's fashion", FakeModel::http(429, json("{'error':{'code':'insufficient_quota'}}")),
            502, "no credit left");
        row("the proxy", of(407, "Proxy-Authenticate: Basic realm=x\r\n"), 502, "The proxy");
        row("too many", of(429, "Retry-After: 17\r\n"), 429, "in 17 seconds", 17);
        row("too many, until a date", of(429, "Retry-After: Thu, 31 Dec 9998 23:59:59 GMT\r\n"), 429,
            "in 86400 seconds", 86'400);
        row("too many, no time", of(429), 429, "in a while");
        row("fault", of(500), 502, "(status 500)");
        row("loading", of(503), 503, "in a minute");
        row("loading, for a while", of(503, "Retry-After: 17\r\n"), 503, "in 17 seconds", 17);
        row("gateway", of(504), 504, "took too long");
        row("elsewhere", of(307, "Location: http://127.0.0.2:9/v1/chat/completions\r\n"), 502, "another address");
        row("no JSON", FakeModel::http(200, "<html>UPSTREAM</html>"), 502, "something else");
        row("nothing", FakeModel::http(200, ""), 502, "something else");
        row("a list", FakeModel::http(200, "[1]"), 502, "something else");
        row("no choices", FakeModel::http(200, json("{'choices':[]}")), 502, "something else");
        row("no text", FakeModel::http(200, json("{'choices':[{'message':{'content':null}}]}")), 502,
            "without any text");
        row("a choice of another form", FakeModel::http(200, json("{'choices':[7]}")), 502, "without any text");
        row("thoughts only", FakeModel::completion(QStringLiteral("<think>Hm.</think>")), 502, "without any text");
        row("ended for length", FakeModel::completion(QStringLiteral("It is"), 0, "length"), 502, "ran out of room");
        row("hung up", FakeModel::hangUp, 502, "broke its answer off");
        row("broken off", FakeModel::completion(QStringLiteral("It")).replace("Content-Length: ", "Content-Length: 9"),
            504, "took too long");
        row("not HTTP", "220 mail.example ESMTP\r\n", 502, "does not speak HTTP");
        row("too large", FakeModel::http(200, QByteArray(1'100'000, ' ')), 502, "broke its answer off");
        row("silence", FakeModel::silence, 504, "took too long");
    }

    void failuresAreToldInOneSentence()
    {
        QFETCH(QByteArray, answer);
        QFETCH(int, status);
        QFETCH(QString, says);
        QFETCH(int, seconds);
        FakeModel model([&](const auto&) { return answer; });
        ModelLimits limits;
        if (says == QStringLiteral("took too long") && !answer.startsWith("HTTP/1.1 504")) {
            limits.answer = std::chrono::milliseconds(300);
        }
        Asking asking(model.url(), limits);
        const EngineText text = asking.engine.summarize(mail);
        QVERIFY2(std::holds_alternative<EngineFailure>(text), textOf(text).c_str());
        const auto& failure = std::get<EngineFailure>(text);
        QVERIFY2(QString::fromStdString(failure.sentence).contains(says), failure.sentence.c_str());
        QCOMPARE(failure.status, status);
        QCOMPARE(failure.retryAfterSeconds, seconds);
        QCOMPARE(model.asked.size(), 1U); // by Qt, too
        QVERIFY(failure.sentence.back() == '.' && failure.sentence.find('\n') == std::string::npos);
        QCOMPARE(asking.log, "summary: " + failure.sentence + "\n"); // and so neither the key nor the server's words
        QVERIFY(asking.log.find("UPSTREAM") == std::string::npos && asking.log.find(key) == std::string::npos);
    }

    void aServerThatCannotBeReachedIsNamedSo()
    {
        std::string gone;
        {
            const FakeModel model([](const auto&) { return QByteArray(); });
            gone = model.url();
        }
        QVERIFY(textOf(Asking(gone).engine.summarize(mail)).find("cannot be reached") != std::string::npos);

        // It takes the connection and says nothing in the handshake.
        FakeModel silent([](const auto&) { return QByteArray(); });
        ModelLimits limits;
        limits.connect = std::chrono::milliseconds(300);
        QVERIFY(
            textOf(Asking(silent.url("https"), limits).engine.summarize(mail)).find("does not accept a connection") !=
            std::string::npos);

        const QTemporaryDir folder;
        const auto made = serverCertificate(folder.path().toStdString(), {"quillmate.example"}, {"127.0.0.1"});
        const auto& certificate = std::get<ServerCertificate>(made);
        QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
        configuration.setLocalCertificate(QSslCertificate(certificate.certificate));
        configuration.setPrivateKey(QSslKey(certificate.key, QSsl::Ec));
        auto server = std::make_unique<QSslServer>();
        server->setSslConfiguration(configuration);
        FakeModel untrusted([](const auto&) { return FakeModel::completion(QStringLiteral("Trust me.")); },
                            std::move(server));
        QVERIFY(textOf(Asking(untrusted.url("https")).engine.summarize(mail)).find("No trusted connection") !=
                std::string::npos);
        QVERIFY(untrusted.asked.empty());
    }

    void theEndIsNotWaitedFor()
    {
        FakeModel* fake = nullptr;
        OpenAiEngine* engine = nullptr;
        std::thread ending;
        FakeModel model([&](const auto&) {
            ending = std::thread([&] { engine->end(); });
            return FakeModel::silence;
        });
        fake = &model;
        Asking asking(model.url());
        engine = &asking.engine;
        const std::string during = textOf(asking.engine.summarize(mail));
        ending.join();
        QVERIFY2(during.find("The service is ending") != std::string::npos, during.c_str());
        QVERIFY(textOf(asking.engine.summarize(mail)).find("The service is ending") != std::string::npos);
        QCOMPARE(fake->asked.size(), 1U);
    }
};

QTEST_GUILESS_MAIN(OpenAiEngineTest)
#include "OpenAiEngineTest.moc"
