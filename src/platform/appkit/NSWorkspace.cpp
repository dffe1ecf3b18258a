#include "platform/appkit/NSWorkspace.h"

#include "platform/foundation/text/print.h"

#include <QDesktopServices>
#include <QUrl>

namespace quillmate
{

NSWorkspace& NSWorkspace::shared()
{
    static NSWorkspace workspace;
    return workspace;
}

bool NSWorkspace::open(const URL& url)
{
    if ((url.scheme() != "https" && url.scheme() != "http") || url.host().empty()) {
        print("Only web pages are opened in the browser, not " + url.absoluteString());
        return false;
    }
    if (m_opener) {
        return m_opener(url);
    }
    if (!QDesktopServices::openUrl(QUrl::fromEncoded(QByteArray::fromStdString(url.absoluteString())))) {
        print("No browser could be started. Open this page by hand: " + url.absoluteString());
        return false;
    }
    return true;
}

} // namespace quillmate
