#include "features/MessageHistory.h"
#include "platform/foundation/settings/SettingsDatabase.h"
#include "platform/foundation/settings/UserDefaults.h"
#include "stopwatch.h"

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>

#include <cstdio>
#include <string>

namespace
{

using namespace quillmate;

constexpr int exchanges = 31;
constexpr auto key = "reply m1";

const std::string text(200, 't');

MessageHistory ofLength(int count)
{
    MessageHistory history;
    for (int i = 0; i < count; ++i) {
        history.append(i % 2 == 0 ? Message::question(text) : Message::answer(text));
    }
    return history;
}

/// By this process so far (proc(5), io).
double bytesWritten()
{
    QFile counters(QStringLiteral("/proc/self/io"));
    if (!counters.open(QIODevice::ReadOnly)) {
        return 0;
    }
    const QByteArray lines = counters.readAll();
    return lines.mid(lines.indexOf("wchar: ") + 7).split('\n').front().toDouble();
}

/// Stores the conversation as the chat does.
void save(MessageHistory& history)
{
    UserDefaults::standard().update(key, [&history](std::optional<std::string_view> stored) {
        const bool known = stored && history.continues(*stored);
        return SettingsChanges{{key, known || !stored ? history.encode().value() : std::string_view()}};
    });
}

void measure(int count, const std::filesystem::path& file)
{
    // As another client writes it: without room for more.
    MessageHistory history = ofLength(count);
    std::string bytes(history.encode().value());
    bytes.resize(bytes.find_last_not_of(' ') + 1);
    UserDefaults::standard().setData(key, bytes);
    std::ignore = SettingsDatabase::checkpoint(file);

    std::vector<double> written;
    const auto exchange = [&] {
        const double before = bytesWritten();
        history.append(Message::question(text));
        save(history);
        std::ignore = SettingsDatabase::checkpoint(file);
        history.append(Message::answer(text));
        save(history);
        std::ignore = SettingsDatabase::checkpoint(file);
        written.push_back((bytesWritten() - before) / static_cast<double>(bytes.size()));
    };
    const double seconds = secondsFor(exchanges, exchange);
    std::printf(
        "exchange at %d messages (%zu KB): %.1f ms; written, log and file together: %.3f of the history at "
        "most, %.3f in the median\n",
        count, bytes.size() / 1000, seconds * 1e3, *std::max_element(written.begin(), written.end()),
        (std::nth_element(written.begin(), written.begin() + exchanges / 2, written.end()), written[exchanges / 2]));
}

} // namespace

/// A question and its answer, stored one after the other with their conversation.
int main(int argc, char** argv)
{
    static const QTemporaryDir folder; // The store writes to the last.
    qputenv("XDG_DATA_HOME", folder.path().toLocal8Bit());
    const QCoreApplication application(argc, argv);
    for (const int count : {10, 1'000, 100'000}) {
        measure(count, std::filesystem::path(folder.path().toStdString()) / "quillmate" / "settings.db");
    }
}
