#pragma once

#include <string>
#include <vector>

namespace quillmate
{

/// The desktop's clipboard. Main thread only.
class NSPasteboard
{
public:
    enum class PasteboardType { String };

    static NSPasteboard& general();

    /// Empties the clipboard for what follows.
    void declareTypes(const std::vector<PasteboardType>& types);
    /// Puts the text there as the one item; false for a text that is not UTF-8.
    bool setString(const std::string& text, PasteboardType type);

private:
    NSPasteboard() = default;
};

} // namespace quillmate
