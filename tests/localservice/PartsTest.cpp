#include "localservice/AnswerPool.h"
#include "localservice/HttpServer.h"
#include "localservice/LoginForm.h"
#include "localservice/Secrets.h"
#include "localservice/ServiceStore.h"
#include "localservice/SignInSessions.h"
#include "localservice/UpdateOffer.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <atomic>
#include <chrono>
#include <future>

using namespace quillmate::localservice;
using Outcome = SignInSessions::Outcome;

/// The service's parts whose faults would hardly show from outside.
class PartsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void versionsCompareAsNumbers_data()
    {
        QTest::addColumn<QString>("candidate");
        QTest::addColumn<QString>("current");
        QTest::addColumn<bool>("newer");
        const auto row = [](const char* candidate, const char* current, bool newer) {
            QTest::addRow("%s over %s", candidate, current)
                << QString::fromUtf8(candidate) << QString::fromUtf8(current) << newer;
        };
        row("1.10", "1.9", true);
        row("1.9", "1.10", false);
        row("2", "1.99.99", true);
        row("1.2", "1.2.0", false);
        row("1.2.0.1", "1.2", true);
        row("1.02", "1.2", false);
        row("1.0", "", true);
        row("0.0", "", false);
        row("1.0", "nonsense", true);
        row("1.99999999999999999999999", "1.99999999999999999999998", true);
        row("1.2-beta", "1.2", false);
        // Semantic Versioning 2.0.0, 11.
        row("1.2.0", "1.2.0-rc.1", true);
        row("1.0.0-alpha.1", "1.0.0-alpha", true);
        row("1.0.0-alpha.beta", "1.0.0-alpha.1", true);
        row("1.0.0-beta.11", "1.0.0-beta.2", true);
        row("1.0.0-beta.2", "1.0.0-beta.11", false);
        row("1.0.0-rc.1", "1.0.0-rc.1+7", false);
        row("1.1.0-alpha", "1.0.0", true);
        row("1.0.0+2", "1.0.0+1", false);
        row("1.3", "v1.2", true);
        row("1.2", "V1.2.0", false);
    }

    void versionsCompareAsNumbers()
    {
        QFETCH(QString, candidate);
        QFETCH(QString, current);
        QFETCH(bool, newer);
        QCOMPARE(isNewerVersion(candidate.toStdString(), current.toStdString()), newer);
        QVERIFY(!newer || !isNewerVersion(current.toStdString(), candidate.toStdString()));
    }

    void addressesArePlausible_data()
    {
        QTest::addColumn<QByteArray>("email");
        QTest::addColumn<bool>("valid");
        const auto row = [](const QByteArray& email, bool valid) { QTest::newRow(email.left(60)) << email << valid; };
        for (const char* good : {"a@b.org", "first.last+tag@mail.example.co", "o'neil@example.org", "ü@bücher.example",
                                 "Anna@EXAMPLE.org", "x@1.example"}) {
            row(good, true);
        }
        for (const char* bad : {"a", "@b.org", "a@", "a@b", "a@b..org", "a b@c.org", "a@b@c.org", "a@-b.org",
                                "a@b-.org", ".a@b.org", "a..b@c.org", "a@b.org, c@d.org", "<a@b.org>", "a@b.o"}) {
            row(bad, false);
        }
        row(QByteArray(65, 'a') + "@b.org", false);
        row("a@" + QByteArray(60, 'b') + '.' + QByteArray(200, 'c') + ".org", false);
    }

    void addressesArePlausible()
    {
        QFETCH(QByteArray, email);
        QFETCH(bool, valid);
        const QByteArray body = "name=Anna&email=" + email.toPercentEncoding();
        QCOMPARE(readLoginForm(body.toStdString()).emailError.empty(), valid);
    }

    void namesAreOneLineWithoutControls()
    {
        const LoginForm form = readLoginForm("name=+An%00na%0A%E2%80%AEB+%C3%A9%FF&email=");
        QCOMPARE(QString::fromStdString(form.name), QStringLiteral("An na B é\uFFFD"));
        QVERIFY(!readLoginForm("name=" + std::string(101, 'x')).nameError.empty());
    }

    void aSessionEndsAfterItsTime()
    {
        auto now = std::chrono::steady_clock::time_point{};
        SignInSessions sessions([&now] { return now; });
        const std::string id = *sessions.begin();
        const std::string other = *sessions.begin();
        int issued = 0;
        const auto issue = [&issued] { return "token" + std::to_string(++issued); };
        QCOMPARE(sessions.complete(id, "wrong", issue), Outcome::WrongFormToken);
        QCOMPARE(sessions.complete(id, "", issue), Outcome::WrongFormToken);
        QCOMPARE(sessions.complete("unknown", "", issue), Outcome::Unknown);
        const std::string formToken = sessions.state(id)->formToken;
        now += SignInSessions::life - std::chrono::seconds(1);
        QCOMPARE(sessions.complete(id, formToken, issue), Outcome::SignedIn);
        QCOMPARE(sessions.complete(id, formToken, issue), Outcome::AlreadySignedIn);
        QCOMPARE(issued, 1);
        QCOMPARE(*sessions.fetch(id)->accessToken, std::string("token1"));
        now += std::chrono::seconds(2);
        QVERIFY(!sessions.fetch(id));
        QVERIFY(!sessions.state(other));
        QCOMPARE(sessions.complete(other, "", issue), Outcome::Unknown);
    }

    void aFetchedTokenIsForgottenSoon()
    {
        auto now = std::chrono::steady_clock::time_point{};
        SignInSessions sessions([&now] { return now; });
        const std::string id = *sessions.begin();
        QCOMPARE(sessions.complete(id, sessions.state(id)->formToken, [] { return std::string("token"); }),
                 Outcome::SignedIn);
        now += std::chrono::minutes(5);
        QVERIFY(sessions.fetch(id));
        now += SignInSessions::lifeAfterDelivery - std::chrono::seconds(1);
        QVERIFY(sessions.fetch(id)); // the second fetch does not lengthen it
        now += std::chrono::seconds(1);
        QVERIFY(!sessions.fetch(id));
    }

    void unfinishedSessionsAreCapped()
    {
        auto now = std::chrono::steady_clock::time_point{};
        SignInSessions sessions([&now] { return now; });
        for (std::size_t count = 0; count < SignInSessions::limit; ++count) {
            QVERIFY(sessions.begin());
        }
        QVERIFY(!sessions.begin());
        now += SignInSessions::life;
        QVERIFY(sessions.begin());
    }

    void theStoreKeepsUsersApart()
    {
        const QTemporaryDir folder;
        auto store = std::get<std::unique_ptr<ServiceStore>>(ServiceStore::open(folder.path().toStdString()));
        const std::string annaToken = store->signIn("anna@example.org", "Anna");
        const std::string benToken = store->signIn("ben@example.org", "Ben");
        const User anna = *store->userOfToken(annaToken);
        const User ben = *store->userOfToken(benToken);
        // A second sign-in is the same person under a newer name; the first token stays good.
        const std::string again = store->signIn("anna@example.org", "Anna B");
        QVERIFY(again != annaToken);
        QCOMPARE(store->userOfToken(again)->id, anna.id);
        QCOMPARE(store->userOfToken(annaToken)->name, std::string("Anna B"));
        QVERIFY(!store->userOfToken(secretHash(annaToken)) && !store->userOfToken(""));

        const std::string thread = store->startThread(anna.id, "text '\"; --");
        const std::vector<ThreadMessage> turns = {{ThreadMessage::Role::User, "Q"},
                                                  {ThreadMessage::Role::Assistant, ""}};
        store->addMessages(thread, turns);
        QCOMPARE(store->thread(anna.id, thread)->text, std::string("text '\"; --"));
        QVERIFY(store->thread(anna.id, thread)->messages == turns);
        QVERIFY(!store->thread(ben.id, thread));

        // Of a long chat the end comes back, of a long turn the beginning.
        for (int count = 0; count < 3000; ++count) {
            store->addMessages(thread, {{ThreadMessage::Role::User, std::to_string(count)}});
        }
        store->addMessages(thread, {{ThreadMessage::Role::User, std::string(25'000'000, 'x')}});
        const std::vector<ThreadMessage> latest = store->thread(anna.id, thread)->messages;
        QCOMPARE(latest.size(), std::size_t(ServiceStore::latestTurns));
        QCOMPARE(latest.back().text, std::string(ServiceStore::turnLength, 'x'));
        QCOMPARE(latest[latest.size() - 2].text, std::string("2999"));
        QCOMPARE(latest.front().text, std::to_string(3001 - ServiceStore::latestTurns));
    }

    void aPoolStopsWithoutWaitingForEver()
    {
        std::promise<void> begun;
        std::promise<void> release;
        std::atomic<bool> laterRan = false;
        AnswerPool pool(1);
        pool.start(
            [&] {
                begun.set_value();
                release.get_future().wait();
            },
            AnswerPool::Urgency::Ordinary);
        begun.get_future().wait();
        pool.start([&] { laterRan = true; }, AnswerPool::Urgency::Quick);
        QVERIFY(!pool.stop(std::chrono::milliseconds(0)));
        release.set_value();
        QVERIFY(pool.stop(std::chrono::seconds(30)));
        QVERIFY(!laterRan);
    }

    void onlyWhatIsStillWaitedForIsBegun()
    {
        using namespace std::chrono_literals;
        struct Counting : RequestHandler {
            std::atomic<int> count = 0;
            Admission admit(const HttpRequest&) const override { return {}; }
            HttpResponse refusal(const HttpRequest&, const HttpResponse& failure) const override { return failure; }
            HttpResponse handle(const HttpRequest&) override { return {200 + count++, {}, {}}; }
        };
        // The status that the client is told, 0 where it is told nothing; 200 when it was the first to be handled.
        const auto dispatched = [](const char* method, bool isGone, std::chrono::milliseconds longestWait) {
            Counting handler;
            HttpServer server(handler, 1, longestWait);
            HttpResponse told = {0, {}, {}};
            int last = 0;
            server.dispatch({method, {}, {}, {}, {}}, std::make_shared<std::atomic<bool>>(isGone),
                            [&](HttpResponse response) { told = std::move(response); });
            // One thread works them off in turn, so the first is through when this one is.
            server.dispatch({method, {}, {}, {}, {}}, std::make_shared<std::atomic<bool>>(false),
                            [&](const HttpResponse& response) { last = response.status; });
            const bool through = QTest::qWaitFor([&] { return last > 0; });
            return through && (told.status == 503) == !told.headers.empty() ? std::pair(told.status, last)
                                                                            : std::pair(-1, -1);
        };
        QCOMPARE(dispatched("POST", false, 1min).first, 200);
        QCOMPARE(dispatched("POST", true, 1min), std::pair(0, 200));
        QCOMPARE(dispatched("POST", false, 0min), std::pair(503, 503));
        QCOMPARE(dispatched("GET", false, 0min).first, 200); // quick, and so never long in the queue
    }

    void aStoreClosedEarlyRefusesLaterCalls()
    {
        const QTemporaryDir folder;
        auto opened = ServiceStore::open(folder.path().toStdString());
        const auto store = std::get<std::unique_ptr<ServiceStore>>(std::move(opened));
        store->signIn("anna@example.org", "Anna");
        const QString log = folder.filePath(QStringLiteral("service.db-wal"));
        QVERIFY(QFile::exists(log));
        QVERIFY(store->closeEarly(std::chrono::milliseconds(0)));
        QVERIFY(!QFile::exists(log));
        QVERIFY_THROWS_EXCEPTION(std::runtime_error, store->signIn("ben@example.org", "Ben"));
        QVERIFY_THROWS_EXCEPTION(std::runtime_error, store->userOfToken("x"));
    }

    void aStoreThatCannotBeUsedIsSaid()
    {
        const QTemporaryDir folder;
        QFile file(folder.filePath(QStringLiteral("service.db")));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(QByteArray(8192, 'x')) > 0);
        file.close();
        const auto opened = ServiceStore::open(folder.path().toStdString());
        QVERIFY(std::get<std::string>(opened).find("service.db") != std::string::npos);
        QVERIFY(std::get<std::string>(ServiceStore::open("/proc/none")).find("--data") != std::string::npos);
    }
};

QTEST_GUILESS_MAIN(PartsTest)
#include "PartsTest.moc"
