#pragma once

#include <QRect>

#include <cstdint>
#include <memory>
#include <optional>

class QWindow;

namespace quillmate
{

/// A window of another process on the same display. Known on X11 only: elsewhere no process can see another's windows.
/// Main thread.
class ForeignWindow
{
public:
    /// The process' window on the screen that covers the frame; of several one that no other object stands for, and the
    /// topmost of those. The frame may be in another unit than the display's pixels, as that of an application with a
    /// scale of its own is: what counts is the shape. Null when there is none, and where windows cannot be known.
    static std::unique_ptr<ForeignWindow> find(std::int64_t process, const QRectF& frame);
    ~ForeignWindow();

    ForeignWindow(const ForeignWindow&) = delete;
    ForeignWindow& operator=(const ForeignWindow&) = delete;

    /// For windows of ours to stay above it.
    [[nodiscard]] QWindow* window() const { return m_window.get(); }
    /// Whether it covers the frame still, which is in the unit of the one that it was found by.
    [[nodiscard]] bool covers(const QRectF& frame) const;
    /// Where it is, with its title bar, in the coordinates of our own windows; absent once it is gone.
    [[nodiscard]] std::optional<QRect> frame() const;

private:
    explicit ForeignWindow(std::uint32_t id);

    std::uint32_t m_id;
    std::unique_ptr<QWindow> m_window;
};

} // namespace quillmate
