#include "platform/foundation/settings/UserDefaults.h"
#include "stopwatch.h"

#include <QTemporaryDir>

#include <cstdio>
#include <sqlite3.h>
#include <string>

namespace
{

constexpr int keys = 10'000;
constexpr int writes = 2'000;
const std::string value(2048, 'v');

double bareUpsert(const std::string& file)
{
    sqlite3* connection = nullptr;
    sqlite3_open(file.c_str(), &connection);
    sqlite3_exec(connection,
                 "PRAGMA journal_mode=WAL; PRAGMA synchronous=NORMAL;"
                 "CREATE TABLE settings(key BLOB PRIMARY KEY NOT NULL, kind INTEGER NOT NULL, value BLOB NOT NULL)",
                 nullptr, nullptr, nullptr);
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(connection,
                       "INSERT INTO settings VALUES(?, 0, ?) ON CONFLICT(key) DO UPDATE SET value = excluded.value", -1,
                       &statement, nullptr);
    const auto put = [&](int i) {
        const std::string key = "summarizeResponse <" + std::to_string(i % keys) + "@mail.example>";
        sqlite3_bind_blob64(statement, 1, key.data(), key.size(), SQLITE_STATIC);
        sqlite3_bind_blob64(statement, 2, value.data(), value.size(), SQLITE_STATIC);
        sqlite3_step(statement);
        sqlite3_reset(statement);
    };
    sqlite3_exec(connection, "BEGIN", nullptr, nullptr, nullptr);
    for (int i = 0; i < keys; ++i) {
        put(i);
    }
    sqlite3_exec(connection, "COMMIT", nullptr, nullptr, nullptr);
    int next = 0;
    const double seconds = quillmate::secondsFor(writes, [&] { put(next += 7919); });
    sqlite3_finalize(statement);
    sqlite3_close(connection);
    return seconds;
}

double throughUserDefaults(const std::string& file)
{
    quillmate::UserDefaults defaults(file);
    const auto put = [&](int i) {
        defaults.setString("summarizeResponse <" + std::to_string(i % keys) + "@mail.example>", value);
    };
    for (int i = 0; i < keys; ++i) {
        put(i);
    }
    int next = 0;
    return quillmate::secondsFor(writes, [&] { put(next += 7919); });
}

} // namespace

/// One settings write of 2 KB among 10,000 keys against the same statement on a bare SQLite connection. Median of
/// 2,000.
int main()
{
    const QTemporaryDir folder;
    const double bare = bareUpsert(folder.filePath(QStringLiteral("bare.db")).toStdString());
    const double ours = throughUserDefaults(folder.filePath(QStringLiteral("quillmate/settings.db")).toStdString());
    std::printf("settings write 2 KB, %d keys: %.1f us, bare upsert %.1f us, ratio %.2f\n", keys, ours * 1e6,
                bare * 1e6, ours / bare);
    return 0;
}
