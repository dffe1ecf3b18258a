#pragma once

#include <initializer_list>
#include <span>
#include <string>
#include <string_view>

namespace quillmate
{

/// Writes the items, joined by one blank and ended by one newline, as one line on standard output. Any thread: the
/// lines of two threads never mix. The bytes of an item are handed to the system without a copy, so a text of many
/// megabytes costs no memory here. A closed output loses the line
/// and nothing else; one that is full makes the caller wait.
void printLine(std::span<const std::string_view> items);

template<typename... Items>
void print(const Items&... items)
{
    const std::string_view views[] = {std::string_view(items)...};
    printLine(views);
}

/// Sends the lines of every later print to another descriptor, which stays the caller's; 1 at the start of the process.
void setPrintDescriptor(int descriptor);

} // namespace quillmate
