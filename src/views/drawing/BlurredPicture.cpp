#include "views/drawing/BlurredPicture.h"

#include "platform/foundation/schedule/DispatchQueue.h"

#include <QPainter>

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace quillmate
{
namespace
{

constexpr int millisecondsBetweenGrabs = 150;
constexpr std::size_t channels = 4;

/// One box filter along a row of pixels `step` bytes apart, from `in` to `out`.
void boxFilter(const uchar* in, uchar* out, int count, qsizetype step, int radius)
{
    const int width = 2 * radius + 1;
    std::array<int, channels> sum{};
    const auto pixel = [step](auto* row, int index) { return row + index * step; };
    const auto change = [&](int index, int sign) {
        if (index >= 0 && index < count) {
            const uchar* entering = pixel(in, index);
            for (std::size_t c = 0; c < channels; ++c) {
                sum[c] += sign * entering[c];
            }
        }
    };
    for (int i = 0; i < radius; ++i) {
        change(i, 1);
    }
    for (int i = 0; i < count; ++i) {
        change(i + radius, 1);
        change(i - radius - 1, -1);
        uchar* written = pixel(out, i);
        for (std::size_t c = 0; c < channels; ++c) {
            written[c] = static_cast<uchar>((sum[c] + width / 2) / width);
        }
    }
}

} // namespace

QImage blurred(const QImage& picture, double standardDeviation)
{
    QImage image = picture.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    // The variance of a box of width w is (w² - 1) / 12; three of them add up.
    const int radius =
        static_cast<int>(std::lround((std::sqrt(4 * standardDeviation * standardDeviation + 1) - 1) / 2));
    if (radius < 1 || image.isNull()) {
        return image;
    }
    QImage other(image.size(), image.format());
    other.setDevicePixelRatio(image.devicePixelRatio());
    constexpr int passes = 3;
    for (int pass = 0; pass < passes; ++pass) {
        for (int y = 0; y < image.height(); ++y) {
            boxFilter(std::as_const(image).scanLine(y), other.scanLine(y), image.width(), channels, radius);
        }
        for (int x = 0; x < image.width(); ++x) {
            const qsizetype offset = x * static_cast<qsizetype>(channels);
            boxFilter(std::as_const(other).bits() + offset, image.bits() + offset, image.height(), image.bytesPerLine(),
                      radius);
        }
    }
    return image;
}

BlurredPicture::BlurredPicture(QQuickItem* parent)
    : QQuickPaintedItem(parent)
{
    m_pause.setSingleShot(true);
    m_pause.setInterval(millisecondsBetweenGrabs);
    connect(&m_pause, &QTimer::timeout, this, &BlurredPicture::grab);
    connect(this, &BlurredPicture::sourceChanged, this, &BlurredPicture::grab);
    connect(this, &BlurredPicture::blurRadiusChanged, this, &BlurredPicture::blurAgain);
}

void BlurredPicture::itemChange(ItemChange change, const ItemChangeData& value)
{
    if (change == ItemSceneChange) {
        follow(value.window);
    }
    QQuickPaintedItem::itemChange(change, value);
}

void BlurredPicture::follow(QQuickWindow* window)
{
    if (m_window) {
        disconnect(m_window, nullptr, this, nullptr);
    }
    m_window = window;
    m_grab = nullptr; // What was asked of the old window may never come.
    if (window) {
        connect(window, &QQuickWindow::frameSwapped, this, &BlurredPicture::frameShown);
        grab();
    }
}

void BlurredPicture::frameShown()
{
    ++m_framesSinceGrab;
    if (!m_grab && !m_pause.isActive()) {
        m_pause.start();
    }
}

void BlurredPicture::grab()
{
    if (m_grab || !m_source || !m_window) {
        return;
    }
    m_framesSinceGrab = 0;
    m_grab = m_source->grabToImage(); // Nothing for an item without a size: it will be asked again.
    if (m_grab) {
        connect(m_grab.get(), &QQuickItemGrabResult::ready, this, &BlurredPicture::take);
    }
}

void BlurredPicture::take()
{
    const auto result = std::exchange(m_grab, nullptr);
    DispatchQueue::main().async([result] {}); // It is in the middle of its own signal.
    QImage sharp = result->image();
    // The grab takes a frame of its own; one more than that may have shown something new.
    constexpr int framesOfGrab = 1;
    if (m_framesSinceGrab > framesOfGrab && !m_pause.isActive()) {
        m_pause.start();
    }
    if (sharp == m_sharp) {
        return;
    }
    m_sharp = std::move(sharp);
    m_sharp.setDevicePixelRatio(m_window ? m_window->effectiveDevicePixelRatio() : 1);
    blurAgain();
}

void BlurredPicture::blurAgain()
{
    m_blurred = blurred(m_sharp, m_blurRadius * m_sharp.devicePixelRatio());
    update();
    Q_EMIT pictureChanged();
}

void BlurredPicture::paint(QPainter* painter)
{
    painter->drawImage(QPointF(), m_blurred);
}

} // namespace quillmate
