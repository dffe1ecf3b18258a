#include "hosts/preview/WindowPicture.h"

#include <QImage>
#include <QImageWriter>
#include <chrono>
#include <utility>

namespace quillmate
{
namespace
{

using namespace std::chrono_literals;

// Longer than a layout takes to come to rest, shorter than the blinking of a caret.
constexpr auto quietTime = 250ms;
constexpr qint64 patienceMilliseconds = 2000;

} // namespace

WindowPicture::WindowPicture(QQuickWindow& window, QString file, std::function<bool()> isReady, QObject* parent)
    : QObject(parent)
    , m_window(window)
    , m_file(std::move(file))
    , m_isReady(std::move(isReady))
{
    connect(&window, &QQuickWindow::frameSwapped, this, [this] { m_redrawn = true; });
    connect(&m_timer, &QTimer::timeout, this, &WindowPicture::look);
    m_timer.start(quietTime);
}

void WindowPicture::look()
{
    if (!m_isReady()) {
        m_redrawn = false;
        return;
    }
    if (!m_sinceReady.isValid()) {
        m_sinceReady.start();
    }
    if (std::exchange(m_redrawn, false) && m_sinceReady.elapsed() < patienceMilliseconds) {
        return;
    }
    m_timer.stop();
    QImageWriter writer(m_file, "png");
    const bool written = writer.write(m_window.grabWindow());
    Q_EMIT taken(written
                     ? QString()
                     : QStringLiteral("the picture %1 cannot be written (%2): name a file in a folder that exists and "
                                      "that you may write to.")
                           .arg(m_file, writer.errorString()));
}

} // namespace quillmate
