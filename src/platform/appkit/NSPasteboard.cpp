#include "platform/appkit/NSPasteboard.h"

#include "base/CharacterSet.h"

#include <QClipboard>
#include <QGuiApplication>

namespace quillmate
{

NSPasteboard& NSPasteboard::general()
{
    static NSPasteboard pasteboard;
    return pasteboard;
}

void NSPasteboard::declareTypes(const std::vector<PasteboardType>&)
{
    QGuiApplication::clipboard()->clear();
}

bool NSPasteboard::setString(const std::string& text, PasteboardType)
{
    if (!isValidUTF8(text)) {
        return false;
    }
    QGuiApplication::clipboard()->setText(QString::fromStdString(text));
    return true;
}

} // namespace quillmate
