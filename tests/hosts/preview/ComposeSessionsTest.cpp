#include "hosts/preview/ComposeSessions.h"
#include "hosts/preview/ComposeWindowState.h"
#include "platform/appkit/MEExtensionViewController.h"

#include <QMutex>
#include <QSignalSpy>
#include <QTest>
#include <QThread>

using namespace quillmate;

namespace
{

/// Writes down what the host asks, and on which thread.
class Record
{
public:
    void add(const QString& what)
    {
        const QMutexLocker lock(&m_mutex);
        const bool onMain = QThread::currentThread() == QCoreApplication::instance()->thread();
        m_lines.append(what + (onMain ? u" main"_qs : u" other"_qs));
    }
    QStringList lines() const
    {
        const QMutexLocker lock(&m_mutex);
        return m_lines;
    }

private:
    mutable QMutex m_mutex;
    QStringList m_lines;
};

class RecordingHandler : public MEComposeSessionHandler
{
public:
    RecordingHandler(Record& record, bool givesPanel)
        : m_record(record)
        , m_givesPanel(givesPanel)
    {
    }
    void mailComposeSessionDidBegin(const MEComposeSession& session) override
    {
        m_record.add(u"begin "_qs + name(session));
    }
    void mailComposeSessionDidEnd(const MEComposeSession& session) override
    {
        m_record.add(u"end "_qs + name(session));
    }
    std::shared_ptr<MEExtensionViewController> viewControllerForSession(const MEComposeSession& session) override
    {
        m_record.add(u"panel "_qs + name(session));
        return m_givesPanel ? std::make_shared<MEExtensionViewController>() : nullptr;
    }

private:
    static QString name(const MEComposeSession& session)
    {
        const auto message = session.composeContext().originalMessage();
        return message ? QString::fromStdString(message->subject) : u"new"_qs;
    }

    Record& m_record;
    bool m_givesPanel;
};

std::shared_ptr<ComposeWindowState> replyTo(const char* subject)
{
    const auto document = std::make_shared<const MailDocument>(
        readDocument("From: a@example.com\nSubject: " + std::string(subject) + "\n\nx\n"));
    return std::make_shared<ComposeWindowState>(ComposeKind::Reply, document);
}

} // namespace

class ComposeSessionsTest : public QObject
{
    Q_OBJECT

private:
    ComposeSessions::HandlerFactory factory(bool givesPanel = true)
    {
        return [this, givesPanel](const MEComposeSession& session) {
            m_sessions.insert(QString::fromStdString(session.sessionID()));
            return std::make_shared<RecordingHandler>(*m_record, givesPanel);
        };
    }

    std::unique_ptr<Record> m_record;
    QSet<QString> m_sessions;

private Q_SLOTS:
    void init()
    {
        m_record = std::make_unique<Record>();
        m_sessions.clear();
    }

    void oneAfterTheOther()
    {
        ComposeSessions sessions(factory());
        const auto first = replyTo("first");
        const auto second = std::make_shared<ComposeWindowState>(ComposeKind::NewMessage, nullptr);
        sessions.begin(first);
        sessions.begin(second);
        QVERIFY(!sessions.isSettled());
        QCOMPARE(m_record->lines(), QStringList());

        sessions.allow();
        QTRY_VERIFY(sessions.isSettled());
        QCOMPARE(m_record->lines(),
                 QStringList({"begin first other", "panel first main", "begin new other", "panel new main"}));
        QCOMPARE(m_sessions.size(), 2);
        QVERIFY(first->panel() && second->panel() && first->panel() != second->panel());
    }

    void closingLetsGoOfThePanel()
    {
        ComposeSessions sessions(factory());
        sessions.allow();
        const auto window = replyTo("x");
        sessions.begin(window);
        QTRY_VERIFY(window->panel());
        const QPointer<QQuickItem> panel = window->panel();
        QSignalSpy changed(window.get(), &ComposeWindowState::panelChanged);
        sessions.end(window);
        QVERIFY(panel.isNull());
        QVERIFY(!window->panel());
        QCOMPARE(changed.count(), 1);
        QTRY_COMPARE(m_record->lines().last(), "end x other");
    }

    void closedWhileWaiting()
    {
        ComposeSessions sessions(factory());
        const auto window = replyTo("x");
        sessions.begin(window);
        sessions.end(window);
        sessions.allow();
        QVERIFY(sessions.isSettled());
        QCOMPARE(m_record->lines(), QStringList());
    }

    void closedWhileBeginning()
    {
        ComposeSessions sessions(factory());
        sessions.allow();
        const auto window = replyTo("x");
        sessions.begin(window);
        sessions.end(window); // Its panel would be asked for in a later turn of the loop.
        QTRY_VERIFY(sessions.isSettled());
        QTRY_COMPARE(m_record->lines(), QStringList({"begin x other", "end x other"}));
        QVERIFY(!window->panel());
    }

    void refusedShowsWhy()
    {
        ComposeSessions sessions(factory());
        const auto waiting = replyTo("x");
        sessions.begin(waiting);
        sessions.refuse(u"No service."_qs);
        const auto later = replyTo("y");
        sessions.begin(later);
        QVERIFY(sessions.isSettled());
        QCOMPARE(waiting->panelFailure(), "No service.");
        QCOMPARE(later->panelFailure(), "No service.");
        QCOMPARE(m_record->lines(), QStringList());
    }

    void extensionWithoutPanel()
    {
        ComposeSessions sessions(factory(false));
        sessions.allow();
        const auto window = replyTo("x");
        sessions.begin(window);
        QTRY_VERIFY(sessions.isSettled());
        QVERIFY(!window->panel());
        QVERIFY(!window->panelFailure().isEmpty());
    }
};

QTEST_MAIN(ComposeSessionsTest)
#include "ComposeSessionsTest.moc"
