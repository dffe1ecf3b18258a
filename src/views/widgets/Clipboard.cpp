#include "views/widgets/Clipboard.h"

#include "platform/appkit/NSPasteboard.h"
#include "platform/foundation/text/print.h"

namespace quillmate
{

void copyToClipboard(const std::string& text)
{
    NSPasteboard& pasteboard = NSPasteboard::general();
    pasteboard.declareTypes({NSPasteboard::PasteboardType::String});
    if (!pasteboard.setString(text, NSPasteboard::PasteboardType::String)) {
        print("The text cannot be copied because it is not valid UTF-8.");
    }
}

} // namespace quillmate
