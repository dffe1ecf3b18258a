#include "server/signin/Secrets.h"
#include "server/store/ServiceStore.h"
#include "support/TestProgram.h"

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>

using namespace quillmate;
using namespace quillmate::server;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Role = ThreadMessage::Role;

/// The service's database, without a service.
class StoreTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_store = ServiceStore::open(m_folder->path().toStdString(), [this] { return m_now; }).value();
        m_token = m_store->signIn("anna@example.org", "Anna").value().token;
    }

    void aPersonKeepsTheirTokensUnderANewerName()
    {
        const User anna = *user(m_token);
        const std::string again = m_store->signIn("anna@example.org", "Anna B").value().token;
        QVERIFY(again != m_token);
        QCOMPARE(user(again)->id, anna.id);
        QCOMPARE(user(m_token)->name, std::string("Anna B"));
        QVERIFY(user(m_store->signIn("ben@example.org", "Ben").value().token)->id != anna.id);
        QVERIFY(!user(secretHash(m_token)) && !user(""));
    }

    void aTokenIsGoodForNinetyDays()
    {
        m_now += 90 * 24h - 1s;
        QVERIFY(user(m_token));
        m_now += 2s;
        QVERIFY(!user(m_token));
        QVERIFY(user(m_store->signIn("anna@example.org", "Anna").value().token) && !user(m_token));
    }

    void aBrowserIsKnownForNinetyDaysByAHashAlone()
    {
        const std::string browser = m_store->signIn("ben@example.org", "Ben").value().browser;
        m_now += 90 * 24h;
        QCOMPARE(m_store->userByBrowser(browser).value()->name, std::string("Ben"));
        QVERIFY(!m_store->userByBrowser(secretHash(browser)).value() && !user(browser));
        m_now += 1s;
        QVERIFY(!m_store->userByBrowser(browser).value());
    }

    void aStoreOfTheFirstVersionIsTakenOver()
    {
        m_store.reset();
        const std::string path = m_folder->filePath(u"service.db"_s).toStdString();
        runSql(openSqlite(path, SQLITE_OPEN_READWRITE, 0), "DROP TABLE browsers; PRAGMA user_version = 1");
        m_store = ServiceStore::open(m_folder->path().toStdString(), [this] { return m_now; }).value();
        QVERIFY(user(m_token));
        QVERIFY(m_store->userByBrowser(m_store->signIn("ben@example.org", "Ben").value().browser).value());
    }

    void aChatIsItsOwnersAndComesBackWithItsLatestTurns()
    {
        const std::int64_t anna = user(m_token)->id;
        const std::int64_t ben = user(m_store->signIn("ben@example.org", "Ben").value().token)->id;
        const std::string id = m_store->startThread(anna, "text '\"; --").value();
        const std::vector<ThreadMessage> turns = {{Role::User, "Q"}, {Role::Assistant, ""}};
        QVERIFY(m_store->addMessages(id, turns));
        QCOMPARE(m_store->thread(anna, id).value()->text, std::string("text '\"; --"));
        QVERIFY(m_store->thread(anna, id).value()->messages == turns);
        QVERIFY(!m_store->thread(ben, id).value());

        // Of a long chat the end comes back, of a long turn the beginning.
        std::vector<ThreadMessage> many;
        for (int count = 0; count < 3000; ++count) {
            many.push_back({Role::User, std::to_string(count)});
        }
        many.push_back({Role::User, std::string(25'000'000, 'x')});
        QVERIFY(m_store->addMessages(id, many));
        const std::vector<ThreadMessage> latest = m_store->thread(anna, id).value()->messages;
        QCOMPARE(latest.size(), std::size_t(ServiceStore::latestTurns));
        QCOMPARE(latest.back().text, std::string(ServiceStore::turnLength, 'x'));
        QCOMPARE(latest[latest.size() - 2].text, std::string("2999"));
        QCOMPARE(latest.front().text, std::to_string(3001 - ServiceStore::latestTurns));
    }

    void aStoreClosedEarlyRefusesLaterCalls()
    {
        const QString log = m_folder->filePath(u"service.db-wal"_s);
        QVERIFY(QFile::exists(log));
        QVERIFY(m_store->closeEarly(0ms));
        QVERIFY(!QFile::exists(log));
        QVERIFY(!m_store->signIn("ben@example.org", "Ben"));
        QCOMPARE(m_store->userByToken("x").error().text, std::string("the database is closed"));
    }

    void aStoreThatCannotBeUsedIsSaid()
    {
        const QTemporaryDir folder;
        QFile file(folder.filePath(u"service.db"_s));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(QByteArray(8192, 'x')) > 0);
        file.close();
        const auto opened = ServiceStore::open(folder.path().toStdString());
        QVERIFY(opened.error().text.find("service.db") != std::string::npos);
        QVERIFY(ServiceStore::open("/proc/none").error().text.find("--data") != std::string::npos);
    }

private:
    std::optional<User> user(const std::string& token) { return m_store->userByToken(token).value(); }

    std::chrono::system_clock::time_point m_now{20'000 * 24h};
    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<ServiceStore> m_store;
    std::string m_token;
};

QUILLMATE_TEST(StoreTest, QCoreApplication)
#include "StoreTest.moc"
