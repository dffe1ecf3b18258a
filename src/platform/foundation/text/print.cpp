#include "platform/foundation/text/print.h"

#include "base/Descriptors.h"
#include "base/TerminalText.h"
#include "platform/foundation/text/PrintQueue.h"

#include <cstdlib>
#include <mutex>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace quillmate
{
namespace
{

struct Output {
    std::mutex mutex;
    int descriptor = STDOUT_FILENO;
    PrintQueue* queue = nullptr;
};

Output& output()
{
    static Output shared;
    return shared;
}

bool isJournal(int descriptor)
{
    const char* stream = std::getenv("JOURNAL_STREAM");
    struct stat status = {};
    return stream != nullptr && ::fstat(descriptor, &status) == 0 &&
           stream == std::to_string(status.st_dev) + ':' + std::to_string(status.st_ino);
}

} // namespace

void printLine(std::span<const std::string_view> items, PrintedLine kind)
{
    std::vector<std::string_view> parts;
    parts.reserve(items.size() * 2);
    std::size_t size = 0;
    for (const std::string_view item : items) {
        parts.insert(parts.end(), {item, " "});
        size += item.size() + 1;
    }
    parts.back() = "\n";

    Output& to = output();
    const std::lock_guard lock(to.mutex);
    if ((kind == PrintedLine::Private && isJournal(to.descriptor)) || (to.queue && !to.queue->hasRoomFor(size))) {
        return;
    }
    const bool isTerminal = ::isatty(to.descriptor) == 1;
    if (!isTerminal && !to.queue) {
        writeWhole(to.descriptor, parts); // Where nobody reads any more there is no second place to say so.
        return;
    }
    std::string line;
    for (const std::string_view part : parts) {
        line += part;
    }
    line.pop_back();
    line = (isTerminal ? terminalText(line) : std::move(line)) + '\n';
    if (to.queue) {
        to.queue->add(std::move(line));
    } else {
        writeWhole(to.descriptor, {line});
    }
}

void setPrintDescriptor(int descriptor, PrintQueue* queue)
{
    Output& to = output();
    const std::lock_guard lock(to.mutex);
    to.descriptor = descriptor;
    to.queue = queue;
}

} // namespace quillmate
