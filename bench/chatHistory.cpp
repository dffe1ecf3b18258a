#include "features/ChatState.h"
#include "platform/foundation/settings/UserDefaults.h"
#include "stopwatch.h"

#include <QCoreApplication>
#include <QTemporaryDir>

#include <cstdio>
#include <string>

namespace
{

constexpr int messages = 1'000;
constexpr int runs = 301;

const std::string text(200, 't');

} // namespace

/// A message appended to a conversation of a thousand and stored with it, against storing the same bytes as they are.
int main(int argc, char** argv)
{
    static const QTemporaryDir folder; // The store writes to the last.
    qputenv("XDG_DATA_HOME", folder.path().toLocal8Bit());
    const QCoreApplication application(argc, argv);
    quillmate::UserDefaults& defaults = quillmate::UserDefaults::standard();
    quillmate::MessageHistory history;
    for (int i = 0; i < messages; ++i) {
        history.append(i % 2 == 0 ? quillmate::Message::question(text) : quillmate::Message::answer(text));
    }
    const auto append = [&] {
        history.append(quillmate::Message::question(text));
        defaults.setData("reply m1", std::string(history.encode().value()));
    };
    append(); // The first one writes the whole conversation.
    const double ours = quillmate::secondsFor(runs, append);
    std::string bytes(history.encode().value());
    const double bare = quillmate::secondsFor(runs, [&] {
        bytes += text; // Of the same length, only what differs would be written.
        defaults.setData("reply m2", bytes);
    });
    std::printf("append and save at %d messages (%zu KB): %.0f us, the bytes alone %.0f us, ratio %.2f\n", messages,
                bytes.size() / 1000, ours * 1e6, bare * 1e6, ours / bare);
}
