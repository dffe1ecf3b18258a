#include "platform/foundation/schedule/DispatchQueue.h"
#include "platform/foundation/schedule/MainOwned.h"
#include "platform/foundation/schedule/Timer.h"
#include "support/TestProgram.h"

#include <QCoreApplication>
#include <QThread>

#include <thread>

using namespace quillmate;

namespace
{

struct Target {
    int fired = 0;
    std::shared_ptr<Timer> ended;
    void fire()
    {
        ++fired;
        if (ended && fired == 2) {
            ended->invalidate();
        }
    }
};

} // namespace

class ScheduleTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { MainSchedule::shared().clear(); }
    void workRunsInOrderOnTheMainThread()
    {
        QList<int> order;
        std::thread([&] {
            for (int i = 0; i < 100; ++i) {
                DispatchQueue::main().async([&order, i, this] {
                    QVERIFY(QThread::currentThread() == thread());
                    order.append(i);
                });
            }
        }).join();
        QVERIFY(order.isEmpty()); // never before the loop turns
        QTRY_COMPARE(order.size(), 100);
        QVERIFY(std::is_sorted(order.begin(), order.end()));
    }

    void workThatAddsWork()
    {
        QStringList order;
        DispatchQueue::main().async([&] {
            DispatchQueue::main().async([&] { order.append("added"); });
            order.append("first");
        });
        DispatchQueue::main().async([&] { order.append("second"); });
        QTRY_COMPARE(order, (QStringList{"first", "second", "added"}));
    }

    void delaysRunInOrder()
    {
        const ManualTime time;
        QStringList order;
        const auto add = [&](double seconds, const char* name) {
            DispatchQueue::main().asyncAfter(seconds, [&order, name] { order.append(QString::fromLatin1(name)); });
        };
        add(2.0, "two");
        add(1.0, "one");
        add(2.0, "two again");
        DispatchQueue::main().asyncAfter(1.0, [&] { add(1.0, "two, late"); });
        ManualTime::advance(0.999);
        QCOMPARE(order, QStringList());
        ManualTime::advance(0.001);
        QCOMPARE(order, QStringList{"one"});
        ManualTime::advance(10.0);
        QCOMPARE(order, (QStringList{"one", "two", "two again", "two, late"}));
    }

    void realTime()
    {
        bool done = false;
        const auto token = MainSchedule::shared().postAfter(0.01, [] { QFAIL("cancelled"); });
        MainSchedule::shared().cancel(token);
        std::thread([&] { DispatchQueue::main().asyncAfter(0.02, [&] { done = true; }); }).join();
        QTRY_VERIFY(done);
    }

    void timers()
    {
        const ManualTime time;
        const auto target = std::make_shared<Target>();
        const auto repeating = Timer::scheduledTimer(10.0, std::weak_ptr(target), &Target::fire, true);
        ManualTime::advance(9.9);
        QCOMPARE(target->fired, 0);
        ManualTime::advance(25.1);
        QCOMPARE(target->fired, 3);
        repeating->invalidate();
        ManualTime::advance(100.0);
        QCOMPARE(target->fired, 3);
        const auto once = Timer::scheduledTimer(1.0, std::weak_ptr(target), &Target::fire, false);
        ManualTime::advance(10.0);
        QCOMPARE(target->fired, 4);
        QVERIFY(!once->isValid());

        const auto stopper = std::make_shared<Target>();
        stopper->ended = Timer::scheduledTimer(1.0, std::weak_ptr(stopper), &Target::fire, true);
        ManualTime::advance(10.0);
        QCOMPARE(stopper->fired, 2);
    }

    void timersDoNotKeepTheirTarget()
    {
        const ManualTime time;
        auto target = std::make_shared<Target>();
        const std::weak_ptr<Target> weak = target;
        auto timer = Timer::scheduledTimer(1.0, weak, &Target::fire, true);
        target.reset();
        QVERIFY(weak.expired());
        ManualTime::advance(1.0);
        QVERIFY(!timer->isValid());
        timer = Timer::scheduledTimer(1.0, weak, &Target::fire, true);
        timer.reset();
        QCOMPARE(ManualTime::pendingDelays().size(), std::size_t(0));
    }

    void mainOwnedObjects()
    {
        struct Owned {
            QThread** freedOn;
            ~Owned() { *freedOn = QThread::currentThread(); }
        };
        QThread* freedOn = nullptr;
        auto owned = makeMainOwned<Owned>(&freedOn);
        std::thread([held = std::move(owned)]() mutable { held.reset(); }).join();
        QCOMPARE(freedOn, nullptr);
        QTRY_COMPARE(freedOn, thread());
        freedOn = nullptr;
        makeMainOwned<Owned>(&freedOn).reset();
        QCOMPARE(freedOn, thread());
    }
};

QUILLMATE_TEST(ScheduleTest, QCoreApplication)
#include "ScheduleTest.moc"
