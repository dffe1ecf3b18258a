#include "localservice/FakeModel.h"
#include "localservice/ServiceProcess.h"

#include <QJsonDocument>
#include <QTemporaryDir>
#include <QTest>

#include <chrono>
#include <future>

using namespace quillmate::localservice;

namespace
{

const QByteArray key = "sk-The.Key_of-this-test";

QByteArray body(const QJsonObject& fields)
{
    QJsonObject whole = fields;
    for (const char* name : {"email", "plugin_source", "plugin_version", "messageId"}) {
        whole[QString::fromUtf8(name)] = QStringLiteral("x");
    }
    return QJsonDocument(whole).toJson(QJsonDocument::Compact);
}

QByteArray messageBody()
{
    return body({{QStringLiteral("content"), QStringLiteral("The pumps come on Thursday.")}});
}

/// Runs it on a thread of its own while the fake, which lives on this one, answers.
template<typename F>
auto meanwhile(F work)
{
    auto result = std::async(std::launch::async, std::move(work));
    while (result.wait_for(std::chrono::seconds(0)) != std::future_status::ready) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    }
    return result.get();
}

} // namespace

/// The program with a language model behind it.
class OpenAiProgramTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        qputenv("QUILLMATE_OPENAI_API_KEY", key);
        m_answer = FakeModel::completion(QStringLiteral("It is said."));
        m_model = std::make_unique<FakeModel>([this](const auto&) { return m_answer; });
        m_service = std::make_unique<ServiceProcess>(
            m_folder.filePath(QString::fromUtf8(QTest::currentTestFunction())),
            QStringList{QStringLiteral("--engine"), QStringLiteral("openai"), QStringLiteral("--openai-url"),
                        QString::fromStdString(m_model->url()), QStringLiteral("--openai-model"),
                        QStringLiteral("the-model")});
        QVERIFY2(m_service->start(), m_service->standardError().constData());
        m_token = m_service->signIn("Anna", "anna@example.org");
        QVERIFY(!m_token.isEmpty());
    }

    void aFailureReachesTheClientAndIsNoTurnOfTheChat()
    {
        const auto post = [this](const QByteArray& path, const QByteArray& content) {
            return meanwhile([=, this] { return m_service->post(path, content, m_token); });
        };
        const QJsonObject begun =
            post("/api/v1/chat/start", body({{QStringLiteral("email_content"), QStringLiteral("The pumps come.")}}))
                .json()[QStringLiteral("response")]
                .toObject();
        const auto ask = [&](const char* question) {
            QJsonObject fields = begun;
            fields[QStringLiteral("content")] = QString::fromUtf8(question);
            return post("/api/v1/chat/send", body(fields));
        };
        QCOMPARE(ask("First?").json()[QStringLiteral("response")].toString(), QStringLiteral("It is said."));
        m_answer = FakeModel::http(429, "Bearer " + key, "Retry-After: 9\r\n");
        const Reply refused = ask("Second?");
        QCOMPARE(refused.status, 429);
        QCOMPARE(refused.header("Retry-After"), "9");
        QVERIFY(refused.json()[QStringLiteral("error")].toString().contains(QStringLiteral("in 9 seconds")));
        m_answer = FakeModel::completion(QStringLiteral("It is said."));
        QCOMPARE(ask("Third?").status, 200);
        const FakeModel::Request& last = m_model->asked.back();
        QVERIFY(last.body.contains("First?") && !last.body.contains("Second?") && last.body.contains("Third?"));

        m_answer = FakeModel::http(401, "Bearer " + key);
        const Reply failed = post("/api/v1/summarize", messageBody());
        QCOMPARE(failed.status, 502); // 401 would say that the client's own token is wrong
        QCOMPARE(m_service->stop(), 0);
        const QByteArray log = m_service->standardError();
        QVERIFY2(log.contains("quillmate-service: chat: ") && log.contains("quillmate-service: summary: "),
                 log.constData());
        QVERIFY(!log.contains(key) && !failed.body.contains(key) && !refused.body.contains(key));
    }

    void whoHasGoneIsNotAnswered()
    {
        m_answer = FakeModel::silence;
        const auto asking = [this] {
            HttpExchange client = m_service->connect();
            const QByteArray content = messageBody();
            client.send("POST /api/v1/summarize HTTP/1.1\r\nHost: x\r\nContent-Type: application/json\r\n"
                        "Authorization: Bearer " +
                        m_token + "\r\nContent-Length: " + QByteArray::number(content.size()) + "\r\n\r\n" + content);
            return client;
        };
        std::vector<HttpExchange> clients;
        constexpr std::size_t atOnce = 8;
        while (clients.size() < atOnce) {
            clients.push_back(asking());
        }
        QTRY_COMPARE_WITH_TIMEOUT(m_model->asked.size(), atOnce, 30'000);
        {
            const HttpExchange gone = asking();
            QCOMPARE(m_service->get("/api/v1/me", m_token).status, 200);
        }
        // Once it has answered this, the service has seen the other go.
        QCOMPARE(m_service->get("/api/v1/me", m_token).status, 200);
        m_model.reset();
        for (HttpExchange& client : clients) {
            QCOMPARE(client.receive().status, 502);
        }
        QCOMPARE(m_service->stop(), 0);
        QCOMPARE(m_service->standardError().count("quillmate-service: summary: "), qsizetype(atOnce));
    }

    void manyAreAnsweredAtOnceAndTheEndIsNotKeptByAnyOfThem()
    {
        m_answer = FakeModel::silence;
        std::vector<std::future<Reply>> waiting;
        constexpr std::size_t many = 12; // more than there are threads for
        for (std::size_t count = 0; count < many; ++count) {
            waiting.push_back(std::async(
                std::launch::async, [this] { return m_service->post("/api/v1/summarize", messageBody(), m_token); }));
        }
        QTRY_VERIFY_WITH_TIMEOUT(m_model->asked.size() >= 8, 30'000);
        // Who signs in meanwhile does not wait for a model.
        QCOMPARE(meanwhile([this] { return m_service->get("/api/v1/me", m_token); }).status, 200);
        QVERIFY(!meanwhile([this] { return m_service->signIn("Ben", "ben@example.org"); }).isEmpty());
        QCOMPARE(m_service->stop(), 0);
        for (auto& reply : waiting) {
            QCOMPARE(reply.get().status, 503); // and not just cut off
        }
        QCOMPARE(m_model->asked.size(), 8U);
    }

private:
    QTemporaryDir m_folder;
    QByteArray m_answer;
    std::unique_ptr<FakeModel> m_model;
    std::unique_ptr<ServiceProcess> m_service;
    QByteArray m_token;
};

QTEST_GUILESS_MAIN(OpenAiProgramTest)
#include "OpenAiProgramTest.moc"
