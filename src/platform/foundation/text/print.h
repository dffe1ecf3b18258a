#pragma once

#include <initializer_list>
#include <span>
#include <string>
#include <string_view>

namespace quillmate
{

class PrintQueue;

/// What a line holds. A private one has a token, or what somebody wrote: it is left out where the lines go to the
/// system's journal (JOURNAL_STREAM, systemd.exec(5)), which keeps them and shows them to others.
enum class PrintedLine { Plain, Private };

/// Writes the items, joined by one blank and ended by one newline, as one line on standard output. Any thread: the
/// lines of two threads never mix. On a terminal, control characters are shown as \xNN. Elsewhere the bytes of an item
/// are handed to the system without a copy, so a text of many megabytes costs no memory here. A closed output loses the
/// line and nothing else; one that is full makes the caller wait, unless there is a queue.
void printLine(std::span<const std::string_view> items, PrintedLine kind);

template<typename... Items>
void print(const Items&... items)
{
    const std::string_view views[] = {std::string_view(items)...};
    printLine(views, PrintedLine::Plain);
}

template<typename... Items>
void printPrivate(const Items&... items)
{
    const std::string_view views[] = {std::string_view(items)...};
    printLine(views, PrintedLine::Private);
}

/// Sends the lines of every later print to another descriptor, which stays the caller's; 1 at the start of the process.
/// With a queue, which writes to that descriptor, they go through it.
void setPrintDescriptor(int descriptor, PrintQueue* queue = nullptr);

} // namespace quillmate
