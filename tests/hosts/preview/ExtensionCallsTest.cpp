#include "hosts/MadeUpExtension.h"
#include "hosts/preview/ComposeSessions.h"
#include "hosts/preview/ComposeWindowState.h"
#include "hosts/preview/MessageReader.h"
#include "support/TestProgram.h"

#include <QGuiApplication>
#include <QMutex>
#include <QSignalSpy>
#include <QThread>

#include <filesystem>
#include <future>

using namespace quillmate;

namespace
{

using Window = std::shared_ptr<ComposeWindowState>;

Window replyTo(const char* subject)
{
    return std::make_shared<ComposeWindowState>(
        ComposeKind::Reply, std::make_shared<const MailDocument>(
                                readDocument("From: a@example.com\nSubject: " + std::string(subject) + "\n\nx\n")));
}

bool isMain()
{
    return QThread::currentThread() == QCoreApplication::instance()->thread();
}

} // namespace

/// What the preview asks of an extension, and on which thread.
class ExtensionCallsTest : public QObject
{
    Q_OBJECT

private:
    /// What was asked of the handlers, and whether on the main thread.
    QStringList lines()
    {
        const QMutexLocker lock(&m_mutex);
        return m_lines;
    }

    const std::vector<std::string> m_samples = {QUILLMATE_SAMPLES "/mars.eml", QUILLMATE_SAMPLES "/plain.eml",
                                                QUILLMATE_SAMPLES "/newsletter.eml"};
    MadeUpExtension m_extension;
    QMutex m_mutex;
    QStringList m_lines;
    QSet<QString> m_ids;
    std::unique_ptr<ComposeSessions> m_sessions;

private Q_SLOTS:
    void init()
    {
        m_lines.clear();
        m_ids.clear();
        m_extension.hasPanel = true;
        m_extension.color = [](const MEMessage&) { return 0; };
        m_extension.asked = [this](const char* what, const MEComposeSession& session) {
            const auto message = session.composeContext().originalMessage();
            const QMutexLocker lock(&m_mutex);
            m_ids.insert(QString::fromStdString(session.sessionID()));
            m_lines << QStringLiteral("%1 %2 %3")
                           .arg(what, message ? message->subject.c_str() : "new", isMain() ? "main" : "other");
        };
        m_sessions = std::make_unique<ComposeSessions>(m_extension);
    }
    void cleanup() { m_sessions.reset(); }

    void oneAfterTheOther()
    {
        const auto first = replyTo("first");
        const auto second = std::make_shared<ComposeWindowState>(ComposeKind::NewMessage, nullptr);
        const auto closedWhileWaiting = replyTo("closed");
        for (const Window& window : {first, closedWhileWaiting, second}) {
            m_sessions->begin(window);
        }
        m_sessions->end(closedWhileWaiting);
        QVERIFY(!m_sessions->isSettled());
        QTRY_VERIFY(m_sessions->isSettled());
        QCOMPARE(lines(), QStringList({"begin first other", "panel first main", "begin new other", "panel new main"}));
        QCOMPARE(m_ids.size(), 2);
        QVERIFY(first->panel() && second->panel() && first->panel() != second->panel());
    }

    void closingLetsGoOfThePanel()
    {
        const auto window = replyTo("x");
        m_sessions->begin(window);
        QTRY_VERIFY(window->panel());
        const QPointer<QQuickItem> panel = window->panel();
        QSignalSpy changed(window.get(), &ComposeWindowState::panelChanged);
        m_sessions->end(window);
        QVERIFY(panel.isNull() && !window->panel());
        QCOMPARE(changed.count(), 1);
        QTRY_COMPARE(lines().last(), "end x other");
    }

    void closedWhileBeginning()
    {
        const auto window = replyTo("x");
        m_sessions->begin(window);
        m_sessions->end(window); // Its panel would be asked for in a later turn of the loop.
        QTRY_VERIFY(m_sessions->isSettled());
        QTRY_COMPARE(lines(), QStringList({"begin x other", "end x other"}));
        QVERIFY(!window->panel());
    }

    void extensionWithoutPanel()
    {
        m_extension.hasPanel = false;
        const auto window = replyTo("x");
        m_sessions->begin(window);
        QTRY_VERIFY(m_sessions->isSettled());
        QVERIFY(!window->panel() && !window->panelFailure().isEmpty());
    }

    void eachMessageIsDecidedOn()
    {
        std::vector<std::string> asked;
        bool wrong = false; // Asked on the main thread, or shown more than the list knows.
        m_extension.color = [&](const MEMessage& message) {
            wrong = wrong || isMain() || message.rawData || message.headers;
            asked.push_back(message.fromAddress.addressString.value_or("none"));
            return static_cast<int>(asked.size()) - 1; // None for the first.
        };
        MessageReader reader(m_extension, [](const std::string& problem) { qFatal("%s", problem.c_str()); });
        std::vector<int> colors;
        std::vector<std::string> senders;
        reader.list(m_samples, [&](const MessageReader::Listing& listing) {
            wrong = wrong || !isMain();
            for (const auto& listed : listing.value()) {
                colors.push_back(listed.color);
                senders.push_back(listed.entry.summary.sender.address);
            }
        });
        QTRY_COMPARE(colors.size(), std::size_t{3});
        QCOMPARE(colors, (std::vector{0, 1, 2}));
        QCOMPARE(senders, asked);
        QCOMPARE(asked,
                 (std::vector<std::string>{"owen.pritchard@hilltop-observers.example",
                                           "helen.marsh@riverside-print.example", "news@saltmarsh-bakery.example"}));
        QVERIFY(!wrong);
    }

    void endsInTheMiddle()
    {
        std::promise<void> asked;
        std::promise<void> free;
        int count = 0;
        m_extension.color = [&, released = free.get_future().share()](const MEMessage&) {
            if (++count == 1) {
                asked.set_value();
            }
            released.wait();
            return 0;
        };
        bool told = false;
        std::future<void> end;
        {
            MessageReader reader(m_extension, [](const std::string&) {});
            reader.list(m_samples, [&told](const auto&) { told = true; });
            asked.get_future().wait();
            // The end waits for the question that is being answered; the rest is not asked.
            end = std::async(std::launch::async, [&free] { free.set_value(); });
        }
        end.wait();
        QCoreApplication::processEvents();
        QVERIFY(!told);
    }

    void rulesThatCannotBeUsedAreTold()
    {
        m_extension.rules = "[{]";
        std::promise<std::string> told;
        MessageReader reader(m_extension, [&told](const std::string& sentence) { told.set_value(sentence); });
        QVERIFY(!told.get_future().get().empty());
        // The messages are read all the same.
        bool loaded = false;
        reader.load({m_samples[1], 0, std::filesystem::file_size(m_samples[1]), false, nullptr},
                    [&loaded](const auto& result) { loaded = result->hasValue(); });
        QTRY_VERIFY(loaded);
    }
};

QUILLMATE_TEST(ExtensionCallsTest, QGuiApplication)
#include "ExtensionCallsTest.moc"
