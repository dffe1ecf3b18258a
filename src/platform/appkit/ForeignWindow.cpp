#include "platform/appkit/ForeignWindow.h"

#include "platform/appkit/X11Windows.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWindow>

#include <cmath>
#include <limits>
#include <set>
#include <utility>

namespace quillmate
{
namespace
{

/// How far a window's edges are from a frame of another unit, in the display's pixels, all in all.
double distance(const QRect& window, const QRectF& frame)
{
    const double scale = frame.width() > 0 ? window.width() / frame.width() : 0;
    if (scale <= 0) {
        return std::numeric_limits<double>::max();
    }
    return std::abs(window.left() - scale * frame.left()) + std::abs(window.top() - scale * frame.top()) +
           std::abs(window.height() - scale * frame.height());
}

// Applications differ in what they count of the title bar and the borders.
constexpr double nearEnough = 100;

/// The windows that objects stand for, as often as they do. Main thread.
std::multiset<std::uint32_t>& held()
{
    static std::multiset<std::uint32_t> windows;
    return windows;
}

/// From the display's pixels: Qt keeps the origin of each screen and scales what lies in it.
QRect fromPixels(const QRect& pixels)
{
    for (const QScreen* screen : QGuiApplication::screens()) {
        const QPointF origin = screen->geometry().topLeft();
        const double scale = screen->devicePixelRatio();
        if (QRectF(origin, QSizeF(screen->geometry().size()) * scale).contains(pixels.center())) {
            const QPointF corner = origin + (QPointF(pixels.topLeft()) - origin) / scale;
            return QRectF(corner, QSizeF(pixels.size()) / scale).toAlignedRect();
        }
    }
    return pixels;
}

} // namespace

std::unique_ptr<ForeignWindow> ForeignWindow::find(std::int64_t process, const QRectF& frame)
{
    const auto display = X11Windows::ofThisProgram();
    if (!display) {
        return nullptr;
    }
    using Rank = std::pair<bool, double>; // Whether it is held, and its distance.
    std::uint32_t found = 0;
    Rank best;
    for (const std::uint32_t window : display->managed()) {
        const bool isCandidate = display->processOf(window) == process && display->isOnScreen(window);
        const auto place = isCandidate ? display->frameOf(window) : std::nullopt;
        if (!place || distance(*place, frame) >= nearEnough) {
            continue;
        }
        const Rank rank(held().contains(window), distance(*place, frame));
        if (found == 0 || rank < best) {
            best = rank;
            found = window;
        }
    }
    return found == 0 ? nullptr : std::unique_ptr<ForeignWindow>(new ForeignWindow(found));
}

ForeignWindow::ForeignWindow(std::uint32_t id)
    : m_id(id)
    , m_window(QWindow::fromWinId(id))
{
    held().insert(id);
}

ForeignWindow::~ForeignWindow()
{
    held().erase(held().find(m_id));
}

bool ForeignWindow::covers(const QRectF& frame) const
{
    const auto display = X11Windows::ofThisProgram();
    const auto place = display ? display->frameOf(m_id) : std::nullopt;
    return place && distance(*place, frame) < nearEnough;
}

std::optional<QRect> ForeignWindow::frame() const
{
    const auto display = X11Windows::ofThisProgram();
    const auto pixels = display ? display->frameOf(m_id) : std::nullopt;
    return pixels ? std::optional(fromPixels(*pixels)) : std::nullopt;
}

} // namespace quillmate
