#include "hosts/preview/WindowPicture.h"

#include <QImageWriter>
#include <chrono>
#include <utility>

namespace quillmate
{
namespace
{

using namespace std::chrono_literals;

// Longer than a layout takes to come to rest, shorter than the blinking of a caret.
constexpr auto pause = 250ms;
constexpr int mostLooks = 2s / pause;

} // namespace

WindowPicture::WindowPicture(QQuickWindow& window, QString file, std::function<bool()> isReady)
    : m_window(window)
    , m_file(std::move(file))
    , m_isReady(std::move(isReady))
{
    connect(&m_timer, &QTimer::timeout, this, &WindowPicture::look);
    m_timer.start(pause);
}

void WindowPicture::look()
{
    if (!m_isReady()) {
        return;
    }
    QImage now = m_window.grabWindow();
    if (now != m_before && ++m_looks < mostLooks) {
        m_before = std::move(now);
        return;
    }
    m_timer.stop();
    QImageWriter writer(m_file, "png");
    Q_EMIT taken(writer.write(now)
                     ? QString()
                     : QStringLiteral("the picture %1 cannot be written (%2): name a file in a folder that exists and "
                                      "that you may write to.")
                           .arg(m_file, writer.errorString()));
}

} // namespace quillmate
