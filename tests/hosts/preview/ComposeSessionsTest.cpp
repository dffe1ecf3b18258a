#include "hosts/preview/ComposeSessions.h"
#include "hosts/MadeUpExtension.h"
#include "hosts/preview/ComposeWindowState.h"
#include "support/TestProgram.h"

#include <QGuiApplication>
#include <QMutex>
#include <QSignalSpy>
#include <QThread>

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

} // namespace

class ComposeSessionsTest : public QObject
{
    Q_OBJECT

private:
    /// What was asked of the handlers, and whether on the main thread.
    QStringList lines()
    {
        const QMutexLocker lock(&m_mutex);
        return m_lines;
    }

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
        m_extension.asked = [this](const char* what, const MEComposeSession& session) {
            const auto message = session.composeContext().originalMessage();
            const char* thread = QThread::currentThread() == QCoreApplication::instance()->thread() ? "main" : "other";
            const QMutexLocker lock(&m_mutex);
            m_lines << QStringLiteral("%1 %2 %3").arg(what, message ? message->subject.c_str() : "new", thread);
        };
        m_sessions = std::make_unique<ComposeSessions>([this](const MEComposeSession& session) {
            m_ids.insert(QString::fromStdString(session.sessionID()));
            return m_extension.handlerForComposeSession(session);
        });
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
        QCOMPARE(lines(), QStringList());

        m_sessions->allow();
        QTRY_VERIFY(m_sessions->isSettled());
        QCOMPARE(lines(), QStringList({"begin first other", "panel first main", "begin new other", "panel new main"}));
        QCOMPARE(m_ids.size(), 2);
        QVERIFY(first->panel() && second->panel() && first->panel() != second->panel());
    }

    void closingLetsGoOfThePanel()
    {
        m_sessions->allow();
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
        m_sessions->allow();
        const auto window = replyTo("x");
        m_sessions->begin(window);
        m_sessions->end(window); // Its panel would be asked for in a later turn of the loop.
        QTRY_VERIFY(m_sessions->isSettled());
        QTRY_COMPARE(lines(), QStringList({"begin x other", "end x other"}));
        QVERIFY(!window->panel());
    }

    void refusedShowsWhy()
    {
        const Window windows[] = {replyTo("x"), replyTo("y")};
        m_sessions->begin(windows[0]);
        m_sessions->refuse(u"No service."_qs);
        m_sessions->begin(windows[1]);
        QVERIFY(m_sessions->isSettled());
        for (const Window& window : windows) {
            QCOMPARE(window->panelFailure(), "No service.");
        }
        QCOMPARE(lines(), QStringList());
    }

    void extensionWithoutPanel()
    {
        m_extension.hasPanel = false;
        m_sessions->allow();
        const auto window = replyTo("x");
        m_sessions->begin(window);
        QTRY_VERIFY(m_sessions->isSettled());
        QVERIFY(!window->panel() && !window->panelFailure().isEmpty());
    }
};

QUILLMATE_TEST(ComposeSessionsTest, QGuiApplication)
#include "ComposeSessionsTest.moc"
