#pragma once

#include <string_view>
#include <vector>

namespace quillmate
{

/// Opens /dev/null for each standard descriptor that the process was started without; else the next file or connection
/// would get its number, and what is printed would go there. Before anything else in a program.
void openMissingStandardDescriptors();

/// Writes the parts one after the other, with one system call in the ordinary case, and waits where the reader is slow.
/// False when nobody reads any more.
bool writeWhole(int descriptor, const std::vector<std::string_view>& parts);

} // namespace quillmate
