#include "hosts/preview/MessageDecisions.h"
#include "extension/MailExtension.h"
#include "state/ReplyEmailManager.h"
#include "support/TestEnvironment.h"

#include <QTest>
#include <QThread>
#include <QTimer>

#include <condition_variable>
#include <mutex>
#include <thread>

using namespace quillmate;

namespace
{

using Entries = std::shared_ptr<const MessageEntries>;

Entries entriesWith(const std::vector<std::string>& subjects)
{
    std::vector<MessageEntry> entries;
    for (const std::string& subject : subjects) {
        entries.push_back({{}, {{"Ann", "ann@example.com"}, subject, "snippet", {}}});
    }
    return std::make_shared<const MessageEntries>(std::move(entries));
}

/// Notes what it is shown, and colours by the length of the subject.
class NotingHandler : public MEMessageActionHandler
{
public:
    void decideActionForMessage(const MEMessage& message, const Completion& completion) override
    {
        onMainThread = onMainThread || QThread::currentThread() == QCoreApplication::instance()->thread();
        sawSource = sawSource || message.rawData || message.headers;
        addresses.push_back(message.fromAddress.addressString.value_or("none"));
        const auto length = static_cast<int>(message.subject.size());
        completion(length > 0 ? std::optional(MEMessageActionDecision{{.color = length}}) : std::nullopt);
    }

    bool onMainThread = false;
    bool sawSource = false;
    std::vector<std::string> addresses;
};

/// Waits in every answer until it is let go.
class HeldHandler : public MEMessageActionHandler
{
public:
    void decideActionForMessage(const MEMessage&, const Completion& completion) override
    {
        std::unique_lock lock(m_mutex);
        ++m_asked;
        m_changed.notify_all();
        m_changed.wait(lock, [this] { return m_free; });
        completion(std::nullopt);
    }
    void waitForFirst()
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_asked > 0; });
    }
    void letGo()
    {
        const std::lock_guard lock(m_mutex);
        m_free = true;
        m_changed.notify_all();
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    int m_asked = 0;
    bool m_free = false;
};

} // namespace

class MessageDecisionsTest : public QObject
{
    Q_OBJECT

private:
    TestEnvironment m_environment;

private Q_SLOTS:
    void eachMessageInItsOrder()
    {
        const auto handler = std::make_shared<NotingHandler>();
        MessageDecisions decisions(handler);
        std::vector<int> colors;
        bool answeredOnMain = false;
        decisions.ask(entriesWith({"four", "", "sixsix"}), [&](std::vector<int> decided) {
            answeredOnMain = QThread::currentThread() == QCoreApplication::instance()->thread();
            colors = std::move(decided);
        });
        QVERIFY(!decisions.isSettled());
        QTRY_VERIFY(decisions.isSettled());
        QCOMPARE(colors, (std::vector<int>{4, 0, 6}));
        QVERIFY(answeredOnMain);
        QVERIFY(!handler->onMainThread);
        QVERIFY(!handler->sawSource);
        QCOMPARE(handler->addresses, std::vector<std::string>(3, "ann@example.com"));
    }

    /// The panel of an open window works on what the record holds.
    void openSessionKeepsItsMessage()
    {
        MailExtension extension;
        const auto original = std::make_shared<const MEMessage>(
            MEMessage{"From: a@example.com\n\nMine.\n", "Mine", {"a@example.com"}, MEMessage::Headers{}});
        const MEComposeSession session("s", MEComposeContext(original));
        extension.handlerForComposeSession(session)->mailComposeSessionDidBegin(session);
        const ReplyEmail before = ReplyEmailManager::shared().record();
        QCOMPARE(before.content, std::optional<std::string>("Mine."));

        MessageDecisions decisions(extension.handlerForMessageActions());
        std::vector<int> colors;
        decisions.ask(entriesWith({"To Mars", "To mars", "Marseille"}),
                      [&](std::vector<int> decided) { colors = std::move(decided); });
        QTRY_COMPARE(colors, (std::vector<int>{4, 0, 4}));
        QCOMPARE(ReplyEmailManager::shared().record(), before);
    }

    void mainThreadGoesOnMeanwhile()
    {
        const auto handler = std::make_shared<HeldHandler>();
        MessageDecisions decisions(handler);
        std::size_t decided = 0;
        decisions.ask(entriesWith(std::vector<std::string>(10'000, "Mars")),
                      [&](const std::vector<int>& colors) { decided = colors.size(); });
        handler->waitForFirst();
        bool turned = false;
        QTimer::singleShot(0, this, [&turned] { turned = true; });
        QTRY_VERIFY(turned);
        QCOMPARE(decided, std::size_t{0});
        handler->letGo();
        QTRY_COMPARE(decided, std::size_t{10'000});
    }

    void endsInTheMiddle()
    {
        const auto handler = std::make_shared<HeldHandler>();
        bool told = false;
        std::thread release;
        {
            MessageDecisions decisions(handler);
            decisions.ask(entriesWith(std::vector<std::string>(10'000, "Mars")), [&](const auto&) { told = true; });
            handler->waitForFirst();
            release = std::thread([handler] { handler->letGo(); });
        }
        release.join();
        QCoreApplication::processEvents();
        QVERIFY(!told);
    }
};

QTEST_GUILESS_MAIN(MessageDecisionsTest)
#include "MessageDecisionsTest.moc"
