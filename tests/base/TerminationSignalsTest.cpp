#include "base/TerminationSignals.h"
#include "support/TestProgram.h"

#include <QCoreApplication>

#include <csignal>
#include <optional>

using namespace quillmate;

class TerminationSignalsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everySignalEndsOnce();
    void quitsOfItself();
};

void TerminationSignalsTest::everySignalEndsOnce()
{
    for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
        TerminationSignals signals;
        int ends = 0;
        ::raise(number); // Before it is known what the end is.
        ::raise(SIGTERM);
        signals.setEnd([&ends] { ++ends; });
        QTRY_COMPARE(ends, 1);
        ::raise(number);
        QCoreApplication::processEvents();
        QCOMPARE(ends, 1);
    }
    // As nohup starts a program.
    std::signal(SIGHUP, SIG_IGN);
    TerminationSignals signals;
    bool ended = false;
    signals.setEnd([&ended] { ended = true; });
    ::raise(SIGHUP);
    QCoreApplication::processEvents();
    QVERIFY(!ended);
    ::raise(SIGINT);
    QTRY_VERIFY(ended);
}

void TerminationSignalsTest::quitsOfItself()
{
    const TerminationSignals signals;
    ::raise(SIGTERM);
    QCOMPARE(QCoreApplication::exec(), 0);
}

QUILLMATE_TEST(TerminationSignalsTest, QCoreApplication)
#include "TerminationSignalsTest.moc"
