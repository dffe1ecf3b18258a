#include "server/model/OpenAiEngine.h"
#include "server/FakeModel.h"
#include "server/WrittenText.h"
#include "server/http/Certificates.h"
#include "support/TestProgram.h"

#include <QCoreApplication>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QSslKey>
#include <QSslServer>
#include <QTemporaryDir>

using namespace quillmate::server;
using namespace Qt::StringLiterals;
using Role = ThreadMessage::Role;

namespace
{

const std::string key = "sk-The.Key_of-this-test";
const std::string mail =
    "Dear Anna,\n\nthe pumps come on Thursday and not on Monday. Could you confirm the address?\n\n"
    "Kind regards\nTom\n";
const std::string said = "It is said.";

/// JSON with apostrophes for its quotes.
QByteArray json(QByteArray text)
{
    return text.replace('\'', '"');
}

std::string longMail()
{
    std::string text;
    for (int count = 0; count < 400; ++count) {
        text += "The pumps of the series " + std::to_string(count) + " come on Thursday.\n";
    }
    return text;
}

QByteArray saidSo(const FakeModel::Request& = {})
{
    return FakeModel::completion(u" It is said. "_s);
}

/// An engine for the fake, and its log. The engine waits in an event loop of the calling thread, in which the fake
/// lives, too.
struct Asking {
    explicit Asking(const std::string& url, ModelLimits limits = {}, qsizetype context = 8192)
        : engine({readModelAddress(url).value(), "the-model", key, context, limits},
                 [this](const std::string& line) { log += QByteArray::fromStdString(line) + '\n'; })
    {
    }
    std::string summary(const std::string& text = mail) { return written(engine.summarize(text)); }
    QByteArray log;
    OpenAiEngine engine;
};

} // namespace

/// The engine against a language model's server that the test plays.
class OpenAiEngineTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aRequestHasTheFormOfTheProtocol()
    {
        FakeModel model(saidSo);
        Asking asking(model.url());
        QCOMPARE(asking.summary(), said);
        QCOMPARE(written(asking.engine.reply(mail, "Anna Example")), said);
        QCOMPARE(written(asking.engine.answer(mail, {{Role::User, "Who?"}, {Role::Assistant, "Tom."}}, "When?")), said);
        QCOMPARE(model.asked.size(), 3U);
        for (const FakeModel::Request& request : model.asked) {
            QVERIFY(request.head.startsWith("POST /v1/chat/completions "));
            QVERIFY(request.head.contains("Authorization: Bearer " + QByteArray::fromStdString(key) + "\r\n"));
            QVERIFY(request.head.contains("Content-Type: application/json\r\n"));
            QCOMPARE(request.json()[u"model"_s].toString(), u"the-model"_s);
            QCOMPARE(request.json()[u"stream"_s], QJsonValue(false));
            QVERIFY(request.content(-1).contains(u"confirm the address?"_s));
        }
        QVERIFY(model.asked[1].content(0).contains(u"Anna Example"_s));
        QCOMPARE(model.asked[2].content(1), u"Who?"_s);
        QCOMPARE(model.asked[2].content(2), u"Tom."_s);
        QVERIFY(model.asked[2].content(3).endsWith(u"When?"_s));
        QCOMPARE(asking.log, QByteArray());
        // A message without text needs no model.
        QCOMPARE(asking.summary(""), "This message has no text that can be summarized.");
        QCOMPARE(model.asked.size(), 3U);
        // A server that does not count what it reads is not taken to have cut it.
        const FakeModel careless([](const auto&) { return FakeModel::completion(u"It is said."_s, 5); });
        QCOMPARE(Asking(careless.url()).summary(longMail()), said);
    }

    void theContextIsAskedFor()
    {
        struct Row {
            QByteArray path;
            QByteArray body;
            int tokens;
        };
        for (const auto& [path, body, tokens] :
             {Row{"/v1/models",
                  "{'data':[{'id':'other','max_model_len':99999},{'id':'the-model','max_model_len':1500}]}", 1500},
              Row{"/v1/models", "{'data':[{'id':'the-model','meta':{'n_ctx':1650,'n_ctx_train':131072}}]}", 1650},
              Row{"/props", "{'default_generation_settings':{'n_ctx':1600},'total_slots':1}", 1600},
              Row{"/api/ps", "{'models':[{'name':'the-model:latest','context_length':1700}]}", 1700},
              Row{"/api/show", "{'parameters':'stop x\\nnum_ctx         1800','model_info':{'a.context_length':40960}}",
                  1800},
              Row{"/api/show", "{'model_info':{'a.context_length':2048}}", 2048},
              Row{"/api/show", "{'model_info':{'a.context_length':40960}}", 4096}, // trained for more is no promise
              Row{"/v1/models", "{'data':" + QByteArray(300'000, '[') + QByteArray(300'000, ']') + '}', 4096},
              Row{"/props", "{'default_generation_settings':{'n_ctx':-5}}", 4096}}) {
            FakeModel model(saidSo);
            int questions = 0;
            model.other = [&, &path = path, &body = body](const FakeModel::Request& request) {
                ++questions;
                const bool keyed = request.head.contains(QByteArray::fromStdString(key));
                return keyed && request.path == path ? FakeModel::http(200, json(body)) : FakeModel::http(404, "{}");
            };
            Asking asking(model.url(), {}, 0);
            QCOMPARE(asking.summary(longMail()), said);
            QVERIFY2(asking.log.contains(QByteArray::number(tokens) + " tokens"), body.left(80) + asking.log);
            QVERIFY2(asking.log.contains("its end"), asking.log.constData());
            // A server that tells nothing may do so once the model is loaded; then it is known.
            const int all = tokens == 4096 ? 2 * questions : questions;
            QCOMPARE(asking.summary(), said);
            QCOMPARE(asking.summary(), said);
            QCOMPARE(questions, all);
            Asking told(model.url(), {}, 100'000);
            QCOMPARE(told.summary(longMail()), said);
            QCOMPARE(questions, all);
            QCOMPARE(told.log, QByteArray());
        }
    }

    void aServerThatCannotTellItsContextYetIsAskedLater()
    {
        for (const int before : {404, 401, 503}) {
            FakeModel model(saidSo);
            model.other = [&](const FakeModel::Request& request) {
                return request.path == "/api/ps" && !model.asked.empty()
                           ? FakeModel::http(200, json("{'models':[{'name':'the-model','context_length':1700}]}"))
                           : FakeModel::http(before, "{}");
            };
            Asking asking(model.url(), {}, 0);
            for (int count = 0; count < 3; ++count) {
                QCOMPARE(asking.summary(), said);
            }
            const QByteArrayList lines = asking.log.split('\n');
            QCOMPARE(lines.size(), 3);
            QVERIFY2(lines[0].contains(before == 503 ? "cannot tell its context for now; 4096"
                                                     : "does not tell its context; 4096"),
                     lines[0]);
            QVERIFY2(lines[1].contains("has 1700 tokens, as /api/ps"), lines[1]);
        }
    }

    void aPromptThatTheServerCutIsNoticed()
    {
        const QByteArray counted =
            json("{'error':{'type':'exceed_context_size_error','n_ctx':2000,'n_prompt_tokens':4700}}");
        struct Row {
            QByteArray refusal; // empty: cut silently
            bool isChat;
            int room;
        };
        for (const auto& [refusal, isChat, room] :
             {Row{{}, false, 2000}, Row{{}, false, 0}, Row{counted, false, 2000}, Row{counted, false, 0},
              Row{json("{'error':{'code':'context_length_exceeded'}}"), true, 2000}}) {
            const FakeModel model([&, &refusal = refusal, room = room](const FakeModel::Request& request) {
                const int tokens = static_cast<int>(request.body.size() / 4);
                return tokens <= room      ? FakeModel::completion(u"It is said."_s, tokens)
                       : refusal.isEmpty() ? FakeModel::completion(u"Of the piece I saw."_s, tokens * 3 / 8)
                                           : FakeModel::http(400, refusal);
            });
            Asking asking(model.url(), {}, 16'384);
            const auto ask = [&, isChat = isChat] {
                const std::vector<ThreadMessage> earlier = {{Role::User, longMail()}, {Role::Assistant, "Thursday."}};
                return isChat ? written(asking.engine.answer(longMail(), earlier, "When?"))
                              : asking.summary(longMail());
            };
            const std::string text = ask();
            QCOMPARE(model.asked.size(), 2U);
            QVERIFY(model.asked[1].body.size() * 2 < model.asked[0].body.size());
            QVERIFY(model.asked[1].content(-1).contains(u"series 0"_s));
            QVERIFY2(asking.log.contains(refusal.isEmpty() ? "takes less than the " : "refuses the request"),
                     asking.log.constData());
            if (room == 0) {
                QVERIFY(text.find("takes less of a message") != std::string::npos);
                continue;
            }
            QCOMPARE(text, said);
            QCOMPARE(ask(), said); // The next one is cut at once.
            QCOMPARE(model.asked.size(), 3U);
            // A line more or less, since the fence is another one.
            QVERIFY(qAbs(model.asked[2].body.size() - model.asked[1].body.size()) < 200);
        }
    }

    void failuresAreToldInOneSentence()
    {
        const auto refused = [](int code, const QByteArray& headers) {
            return FakeModel::http(code, "UPSTREAM Bearer " + QByteArray::fromStdString(key), headers);
        };
        struct Row {
            QByteArray answer;
            int status;
            const char* says;
            int seconds = 0;
        };
        for (const auto& [answer, status, says, seconds] :
             {// The protocol's own ways of these must not be followed.
              Row{refused(401, "WWW-Authenticate: Basic realm=x\r\n"), 502, "refuses the key"},
              Row{refused(407, "Proxy-Authenticate: Basic realm=x\r\n"), 502, "The proxy"},
              Row{refused(307, "Location: http://127.0.0.2:9/v1/chat/completions\r\n"), 502, "another address"},
              Row{refused(429, "Retry-After: 17\r\n"), 429, "in 17 seconds", 17},
              Row{refused(429, "Retry-After: Thu, 31 Dec 9998 23:59:59 GMT\r\n"), 429, "in 86400 seconds", 86'400},
              Row{FakeModel::http(200, "<html>UPSTREAM</html>"), 502, "something else"},
              Row{FakeModel::completion(u"<think>Hm.</think>"_s), 502, "without any text"},
              Row{FakeModel::completion(u"It is"_s, 0, "length"), 502, "ran out of room"},
              Row{FakeModel::hangUp, 502, "broke its answer off"},
              Row{saidSo().replace("Content-Length: ", "Content-Length: 9"), 504, "too long to answer"},
              Row{"220 mail.example ESMTP\r\n", 502, "does not speak HTTP"},
              Row{FakeModel::http(200, QByteArray(1'100'000, ' ')), 502, "broke its answer off"},
              Row{FakeModel::silence, 504, "too long to answer"}}) {
            const FakeModel model([&, &answer = answer](const auto&) { return answer; });
            ModelLimits limits;
            if (status == 504) {
                limits.answer = std::chrono::milliseconds(300);
            }
            Asking asking(model.url(), limits);
            const EngineText text = asking.engine.summarize(mail);
            QVERIFY2(!text, written(text).c_str());
            const EngineFailure& failure = text.error();
            QVERIFY2(failure.sentence.find(says) != std::string::npos, failure.sentence.c_str());
            QCOMPARE(failure.status, status);
            QCOMPARE(failure.retryAfterSeconds, seconds);
            QCOMPARE(model.asked.size(), 1U); // by Qt, too
            // One sentence of ours, and so neither the key nor the server's words.
            QCOMPARE(asking.log, "summary: " + QByteArray::fromStdString(failure.sentence) + "\n");
            QVERIFY(!asking.log.contains("UPSTREAM") && !asking.log.contains(QByteArray::fromStdString(key)));
        }
    }

    void aServerThatCannotBeReachedIsNamedSo()
    {
        const std::string gone = FakeModel(saidSo).url();
        QVERIFY(Asking(gone).summary().find("cannot be reached") != std::string::npos);

        // It takes the connection and says nothing in the handshake.
        const FakeModel silent([](const auto&) { return FakeModel::silence; });
        ModelLimits limits;
        limits.connect = std::chrono::milliseconds(300);
        QVERIFY(Asking(silent.url("https"), limits).summary().find("does not accept a connection") !=
                std::string::npos);

        const QTemporaryDir folder;
        const auto certificate = serverCertificate(folder.path().toStdString(), {"x.example"}, {"127.0.0.1"}).value();
        QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
        configuration.setLocalCertificate(QSslCertificate(certificate.certificate));
        configuration.setPrivateKey(QSslKey(certificate.key, QSsl::Ec));
        auto server = std::make_unique<QSslServer>();
        server->setSslConfiguration(configuration);
        const FakeModel untrusted(saidSo, std::move(server));
        QVERIFY(Asking(untrusted.url("https")).summary().find("No trusted connection") != std::string::npos);
        QVERIFY(untrusted.asked.empty());
    }
};

QUILLMATE_TEST(OpenAiEngineTest, QCoreApplication)
#include "OpenAiEngineTest.moc"
