#include "server/FakeModel.h"
#include "server/ServiceProcess.h"
#include "support/TestProgram.h"

#include <QCoreApplication>
#include <QTemporaryDir>

#include <chrono>
#include <future>

using namespace quillmate::server;
using namespace Qt::StringLiterals;

namespace
{

const QByteArray key = "sk-The.Key_of-this-test";

QByteArray messageBody()
{
    return bodyOf({{u"content"_s, u"The pumps come on Thursday."_s}});
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
        m_answer = FakeModel::completion(u"It is said."_s);
        m_model = std::make_unique<FakeModel>([this](const auto&) { return m_answer; });
        m_service = std::make_unique<ServiceProcess>(m_folder.filePath(QString::fromUtf8(QTest::currentTestFunction())),
                                                     QStringList{u"--engine"_s, u"openai"_s, u"--openai-url"_s,
                                                                 QString::fromStdString(m_model->url()),
                                                                 u"--openai-model"_s, u"the-model"_s});
        QVERIFY2(m_service->start(), m_service->standardError().constData());
        m_token = m_service->signIn("Anna", "anna@example.org");
        QVERIFY(!m_token.isEmpty());
    }

    void aFailureReachesTheClientAndIsNoTurnOfTheChat()
    {
        const auto post = [this](const QByteArray& path, const QByteArray& content) {
            return meanwhile([=, this] { return m_service->post(path, content, m_token); });
        };
        const Reply begun = post("/api/v1/chat/start", bodyOf({{u"email_content"_s, u"The pumps come."_s}}));
        const auto ask = [&](const QString& question) {
            QJsonObject fields = begun.json()[u"response"_s].toObject();
            fields[u"content"_s] = question;
            return post("/api/v1/chat/send", bodyOf(fields));
        };
        QCOMPARE(ask(u"First?"_s).json()[u"response"_s].toString(), u"It is said."_s);
        m_answer = FakeModel::http(429, "Bearer " + key, "Retry-After: 9\r\n");
        const Reply refused = ask(u"Second?"_s);
        QCOMPARE(refused.status, 429);
        QCOMPARE(refused.header("Retry-After"), "9");
        QVERIFY(refused.json()[u"error"_s].toString().contains(u"in 9 seconds"_s));
        m_answer = FakeModel::completion(u"It is said."_s);
        QCOMPARE(ask(u"Third?"_s).status, 200);
        const QByteArray last = m_model->asked.back().body;
        QVERIFY(last.contains("First?") && !last.contains("Second?") && last.contains("Third?"));

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
        constexpr std::size_t atOnce = 8;
        std::vector<HttpExchange> clients = asking(atOnce);
        QTRY_COMPARE_WITH_TIMEOUT(m_model->asked.size(), atOnce, 30'000);
        {
            const auto gone = asking(1);
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
        std::vector<HttpExchange> waiting = asking(12); // more than there are threads for
        QTRY_VERIFY_WITH_TIMEOUT(m_model->asked.size() >= 8, 30'000);
        // Who signs in meanwhile does not wait for a model.
        QCOMPARE(meanwhile([this] { return m_service->get("/api/v1/me", m_token); }).status, 200);
        QVERIFY(!meanwhile([this] { return m_service->signIn("Ben", "ben@example.org"); }).isEmpty());
        QCOMPARE(m_service->stop(), 0);
        for (HttpExchange& client : waiting) {
            QCOMPARE(client.receive().status, 503); // and not just cut off
        }
        QCOMPARE(m_model->asked.size(), 8U);
    }

private:
    /// Clients that wait for a summary.
    [[nodiscard]] std::vector<HttpExchange> asking(std::size_t count) const
    {
        const QByteArray content = messageBody();
        std::vector<HttpExchange> clients;
        while (clients.size() < count) {
            clients.push_back(m_service->connect());
            clients.back().send("POST /api/v1/summarize HTTP/1.1\r\nHost: x\r\nAuthorization: Bearer " + m_token +
                                "\r\nContent-Length: " + QByteArray::number(content.size()) + "\r\n\r\n" + content);
        }
        return clients;
    }

    QTemporaryDir m_folder;
    QByteArray m_answer;
    std::unique_ptr<FakeModel> m_model;
    std::unique_ptr<ServiceProcess> m_service;
    QByteArray m_token;
};

QUILLMATE_TEST(OpenAiProgramTest, QCoreApplication)
#include "OpenAiProgramTest.moc"
