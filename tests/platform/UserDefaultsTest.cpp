#include "platform/foundation/settings/UserDefaults.h"
#include "base/Sqlite.h"
#include "support/LogCapture.h"
#include "support/TestEnvironment.h"
#include "support/TestProgram.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <atomic>
#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>

using namespace quillmate;

using OptionalText = std::optional<std::string>;

class UserDefaultsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }
    void valuesAndTypes()
    {
        UserDefaults defaults(file());
        QCOMPARE(defaults.string("k"), std::nullopt);
        QCOMPARE(defaults.boolean("k"), false);
        const std::string awkward("a\0b\n\xff", 5);
        for (const std::string& text : {std::string(), std::string("x"), awkward, std::string(5'000'000, 'y')}) {
            defaults.setString("k", text);
            QVERIFY(defaults.string("k") == text);
            defaults.setData("k", text);
            QVERIFY(defaults.data("k") == text);
            QCOMPARE(defaults.string("k"), std::nullopt);
        }
        defaults.setBoolean("k", true);
        QCOMPARE(defaults.boolean("k"), true);
        QCOMPARE(defaults.data("k"), std::nullopt);
        QCOMPARE(defaults.string("k"), std::nullopt);
        defaults.setBoolean("k", false);
        QCOMPARE(defaults.boolean("k"), false);
        defaults.setString("k", "1");
        QCOMPARE(defaults.boolean("k"), false);
        defaults.removeObject("k");
        defaults.removeObject("k");
        QVERIFY(defaults.dictionaryRepresentation().empty());
    }

    void keysAreExactAndOutliveTheStore()
    {
        const std::vector<std::string> keys = {"",     "a",    "A",         "a ",        "a/b",
                                               "a//b", "/a/b", "a/b/",      "é",         "e\u0301",
                                               "a%",   "\xff", "a'b\"\n\\", {"a\0b", 3}, {"a\0c", 3}};
        std::map<std::string, SettingsValue> expected = {{"flag", SettingsValue(true)},
                                                         {"data", SettingsValue(SettingsData{"d"})}};
        {
            UserDefaults defaults(file());
            for (const std::string& key : keys) {
                defaults.setString(key, "of " + key);
                expected.emplace(key, "of " + key);
            }
            defaults.setBoolean("flag", true);
            defaults.setData("data", "d");
        }
        UserDefaults defaults(file());
        QVERIFY(defaults.dictionaryRepresentation() == expected);
        for (const std::string& key : keys) {
            QCOMPARE(defaults.string(key), OptionalText("of " + key));
        }
    }

    void emptied()
    {
        UserDefaults defaults(file());
        UserDefaults other(file()); // As another process has it.
        defaults.setString("k", "a secret");
        QVERIFY(QFile::copy(QString::fromStdString(file()), QString::fromStdString(file().string() + ".damaged-1")));
        const auto before = other.timesEmptied();
        defaults.removeAll();
        QVERIFY(other.dictionaryRepresentation().empty());
        QCOMPARE(other.timesEmptied(), before + 1);
        for (const QFileInfo& entry : QDir(m_folder->path()).entryInfoList(QDir::Files)) {
            QVERIFY2(!entry.fileName().contains("damaged"), qPrintable(entry.fileName()));
            QFile bytes(entry.filePath());
            QVERIFY(bytes.open(QIODevice::ReadOnly) && !bytes.readAll().contains("a secret"));
        }
        // What was decided on before brings nothing back.
        const auto say = [](auto) { return SettingsChanges{{"data", "of old"}}; };
        other.setString("k", "of old", before);
        other.update("data", say, before);
        QVERIFY(defaults.dictionaryRepresentation().empty());
        other.setString("k", "new", before + 1);
        QCOMPARE(defaults.string("k"), OptionalText("new"));
    }

    void emptiedWhenTheLockIsFree()
    {
        UserDefaults defaults(file());
        defaults.setString("k", "old");
        UserDefaults other(file());
        QCOMPARE(other.string("k"), OptionalText("old"));
        {
            const auto holder = openSqlite(file().string(), SQLITE_OPEN_READWRITE, 0);
            runSql(holder, "BEGIN IMMEDIATE");
            defaults.removeAll();
            QCOMPARE(defaults.string("k"), OptionalText()); // Here at once,
            defaults.setString("new", "n");
            QCOMPARE(defaults.string("new"), OptionalText("n"));
            QCOMPARE(other.string("k"), OptionalText("old"));
        }
        QTRY_COMPARE(other.string("k"), OptionalText()); // and in the file as soon as it can be.
        QTRY_COMPARE(other.string("new"), OptionalText("n"));
        QCOMPARE(other.timesEmptied(), defaults.timesEmptied());
    }

    void logIsCutBackAfterAReader()
    {
        UserDefaults defaults(file());
        defaults.setString("k", "a secret");
        {
            const auto reader = openSqlite(file().string(), SQLITE_OPEN_READWRITE, 0);
            runSql(reader, "BEGIN; SELECT * FROM settings");
            defaults.removeAll();
            QVERIFY(QFile(QString::fromStdString(file().string() + "-wal")).size() > 0);
        }
        defaults.setString("new", "n"); // What is written meanwhile changes nothing of it.
        const auto holdsSecret = [this](const char* suffix) {
            QFile bytes(QString::fromStdString(file().string() + suffix));
            return bytes.open(QIODevice::ReadOnly) && bytes.readAll().contains("a secret");
        };
        QTRY_VERIFY(!holdsSecret("-wal") && !holdsSecret(""));
        QCOMPARE(defaults.string("new"), OptionalText("n"));
    }

    void filesAreThePrivateKind()
    {
        ::umask(0); // By the store's own doing, not by the caller's mask.
        UserDefaults defaults(file());
        defaults.setString("k", "v");
        const auto mode = [](const std::filesystem::path& path) {
            struct stat status = {};
            ::stat(path.c_str(), &status);
            return static_cast<int>(status.st_mode & 0777U);
        };
        QCOMPARE(mode(file().parent_path()), 0700);
        QCOMPARE(mode(file()), 0600);
        QCOMPARE(mode(file().string() + "-wal"), 0600);
    }

    void manyThreads()
    {
        UserDefaults defaults(file());
        std::atomic<int> wrong = 0;
        std::vector<std::thread> threads;
        for (int t = 0; t < 4; ++t) {
            threads.emplace_back([&, t] {
                const std::string key = "own " + std::to_string(t);
                for (int i = 0; i < 200; ++i) {
                    defaults.setString(key, std::to_string(i));
                    wrong += defaults.string(key) == std::to_string(i) ? 0 : 1;
                    defaults.setString("shared", "whole value");
                    wrong += defaults.string("shared") == "whole value" ? 0 : 1;
                }
            });
        }
        for (auto& thread : threads) {
            thread.join();
        }
        QCOMPARE(wrong.load(), 0);
    }

    void twoStores()
    {
        // What a second process does as well: another connection to the same file.
        UserDefaults first(file());
        UserDefaults second(file());
        first.setString("k", "1");
        QCOMPARE(second.string("k"), OptionalText("1"));
        second.setString("k", "2");
        QCOMPARE(first.string("k"), OptionalText("2"));
        first.removeObject("k");
        QCOMPARE(second.string("k"), std::nullopt);

        const LogCapture log;
        QProcess other;
        other.start(QStringLiteral(SETTINGS_WRITER), {QString::fromStdString(file()), "0", "49"});
        while (other.state() != QProcess::NotRunning) {
            first.setString("mine", std::string(500, 'm'));
            other.waitForFinished(1);
        }
        QCOMPARE(other.exitCode(), 0);
        QVERIFY(first.string("key 49")->starts_with("49"));
        QCOMPARE(first.dictionaryRepresentation().size(), std::size_t(51));
        QCOMPARE(log.lines(), QStringList());
    }

    void changesInOneStep()
    {
        constexpr int each = 1000;
        const auto addTo = [](UserDefaults& defaults, char letter) {
            std::string next;
            defaults.update("k", [&](std::optional<std::string_view> stored) {
                next = std::string(stored.value_or("")) + letter;
                return SettingsChanges{{"k", next}, {"last", next}};
            });
        };
        {
            // Two connections, as two processes have them.
            UserDefaults first(file());
            UserDefaults second(file());
            std::thread other([&] {
                for (int i = 0; i < each; ++i) {
                    addTo(second, 'b');
                }
            });
            for (int i = 0; i < each; ++i) {
                addTo(first, 'a');
            }
            other.join();
            const auto letters = first.data("k");
            QVERIFY(letters && first.data("last") == letters);
            QCOMPARE(first.size("k"), std::size_t(2 * each));
            QCOMPARE(std::count(letters->begin(), letters->end(), 'a'), each);
        }
        // What cannot be stored is kept, and goes on from what is there.
        const LogCapture log;
        std::filesystem::remove_all(file().parent_path());
        QFile obstacle(m_folder->filePath(QStringLiteral("quillmate")));
        QVERIFY(obstacle.open(QIODevice::WriteOnly));
        UserDefaults defaults(file());
        defaults.setString("k", "x");
        addTo(defaults, 'y');
        addTo(defaults, 'z');
        QCOMPARE(defaults.data("k"), OptionalText("xyz"));
        QCOMPARE(defaults.size("k"), std::size_t(3));
    }

    void killedWriterLosesNothing()
    {
        long next = 0;
        for (int round = 0; round < 5; ++round) {
            QProcess writer;
            writer.start(QStringLiteral(SETTINGS_WRITER), {QString::fromStdString(file()), QString::number(next)});
            // Killed after a different number of writes each time, most often in the middle of one.
            QByteArray said;
            while (said.count('\n') < 20 + round * 7) {
                QVERIFY(writer.waitForReadyRead(10'000));
                said += writer.readAllStandardOutput();
            }
            writer.kill();
            writer.waitForFinished();
            said += writer.readAllStandardOutput();
            said.truncate(said.lastIndexOf('\n'));
            const long last = said.mid(said.lastIndexOf('\n') + 1).toLong();
            QVERIFY(last >= next);

            const LogCapture log;
            UserDefaults defaults(file());
            for (long i = std::max(0L, last - 49); i <= last; ++i) {
                const auto value = defaults.string("key " + std::to_string(i % 50));
                QVERIFY(value);
                // The write after the last that was said may have come through as well.
                const long stored = std::stol(*value);
                QVERIFY2(stored == i || stored == i + 50, value->substr(0, 20).c_str());
                QVERIFY(value->ends_with(std::string(2000, 'x')));
            }
            QCOMPARE(log.lines(), QStringList());
            next = last + 1;
        }
    }

    void writesReachTheMainFile()
    {
        UserDefaults defaults(file());
        defaults.setString("k", "find me in the file");
        const auto inMainFile = [this] {
            QFile database(QString::fromStdString(file()));
            return database.open(QIODevice::ReadOnly) && database.readAll().contains("find me in the file");
        };
        QTRY_VERIFY(inMainFile());
    }

    void damagedFile()
    {
        for (const QByteArray& bytes : {QByteArray(5000, 'x'), QByteArray("SQLite format"),
                                        QByteArray("SQLite format 3\0", 16) + QByteArray(4080, '\xff')}) {
            init();
            std::filesystem::create_directories(file().parent_path());
            QFile damaged(QString::fromStdString(file()));
            QVERIFY(damaged.open(QIODevice::WriteOnly));
            damaged.write(bytes);
            damaged.close();

            const LogCapture log;
            UserDefaults defaults(file());
            QCOMPARE(defaults.string("k"), std::nullopt);
            defaults.setString("k", "v");
            QCOMPARE(defaults.string("k"), OptionalText("v"));
            QCOMPARE(log.lines().size(), 1);
            QFile moved(log.lines().front().section("moved to ", 1).section(' ', 0, 0));
            QVERIFY2(moved.open(QIODevice::ReadOnly), qPrintable(log.lines().front()));
            QCOMPARE(moved.readAll(), bytes);
        }
    }

    void damageWhileOpen()
    {
        UserDefaults defaults(file());
        for (int i = 0; i < 200; ++i) {
            defaults.setString("key " + std::to_string(i), std::string(500, 'v'));
        }
        defaults.synchronize();
        QTRY_VERIFY(QFile(QString::fromStdString(file())).size() > 100'000);
        QFile database(QString::fromStdString(file()));
        QVERIFY(database.open(QIODevice::ReadWrite));
        database.seek(4096);
        database.write(QByteArray(static_cast<int>(database.size()) - 4096, '\xee'));
        database.close();
        QFile(QString::fromStdString(file()) + "-wal").resize(0);

        const LogCapture log;
        UserDefaults other(file());
        other.setString("new", "value");
        QCOMPARE(other.string("new"), OptionalText("value"));
        QCOMPARE(log.lines().size(), 1);
        QCOMPARE(files().filter(QStringLiteral("damaged")).filter(QRegularExpression(QStringLiteral("Z$"))).size(), 1);
        QCOMPARE(other.dictionaryRepresentation().size(), std::size_t(1));
    }

    void nowhereToWrite()
    {
        // A file stands where the folder should be made; this holds for every user, root included.
        QFile obstacle(m_folder->filePath(QStringLiteral("quillmate")));
        QVERIFY(obstacle.open(QIODevice::WriteOnly));
        const LogCapture log;
        UserDefaults defaults(file());
        defaults.setString("k", "v");
        defaults.setString("other", "w");
        defaults.removeObject("other");
        QCOMPARE(defaults.string("k"), OptionalText("v"));
        QCOMPARE(defaults.string("other"), std::nullopt);
        QCOMPARE(defaults.dictionaryRepresentation().size(), std::size_t(1));
        QCOMPARE(log.lines().size(), 1);
        QVERIFY(log.lines().front().contains(QString::fromStdString(file())));
    }

    void fullDisk()
    {
        UserDefaults defaults(file());
        defaults.setString("before", "1");
        const LogCapture log;
        // To the writer a limit on the size of its files looks like a disk without room.
        std::signal(SIGXFSZ, SIG_IGN);
        rlimit ordinary{};
        ::getrlimit(RLIMIT_FSIZE, &ordinary);
        const rlimit tight{200'000, ordinary.rlim_max};
        const auto runOut = [&](const std::string& large) {
            ::setrlimit(RLIMIT_FSIZE, &tight);
            defaults.setString("large", large);
            defaults.setString("large 2", large);
            const bool readable = defaults.string("large") == large;
            ::setrlimit(RLIMIT_FSIZE, &ordinary);
            QVERIFY(readable);
        };
        const std::string large(1'000'000, 'x');
        runOut(large);
        QCOMPARE(defaults.string("before"), OptionalText("1"));
        QCOMPARE(log.lines().size(), 1);
        // With room again, what was kept in memory is stored along with the next write.
        defaults.setString("after", "2");
        UserDefaults other(file());
        QVERIFY(other.string("large 2") == large);
        QCOMPARE(other.string("after"), OptionalText("2"));
        // It is told again when it happens again, to texts that are not stored yet.
        QCOMPARE(log.lines().size(), 1);
        runOut(std::string(1'000'000, 'y'));
        QCOMPARE(log.lines().size(), 2);
    }

private:
    [[nodiscard]] std::filesystem::path file() const
    {
        return std::filesystem::path(m_folder->path().toStdString()) / "quillmate" / "settings.db";
    }
    [[nodiscard]] QStringList files() const
    {
        return QDir(QString::fromStdString(file().parent_path())).entryList(QDir::Files);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

QUILLMATE_TEST(UserDefaultsTest, QCoreApplication)
#include "UserDefaultsTest.moc"
