#pragma once

#include <QRect>

#include <cstdint>
#include <optional>
#include <vector>

struct xcb_connection_t;

namespace quillmate
{

/// What an X11 display tells of its windows, in its pixels. Main thread; each question waits for the display's answer.
class X11Windows
{
public:
    /// The display of this program; none where it is not on X11.
    static std::optional<X11Windows> ofThisProgram();

    /// The windows that the window manager manages, the topmost first (Extended Window Manager Hints 1.5,
    /// _NET_CLIENT_LIST_STACKING); none without such a manager.
    [[nodiscard]] std::vector<std::uint32_t> managed() const;
    /// _NET_WM_PID; 0 when the window does not say.
    [[nodiscard]] std::uint32_t processOf(std::uint32_t window) const;
    /// Not while it is minimised or on another desktop.
    [[nodiscard]] bool isOnScreen(std::uint32_t window) const;
    /// With the title bar (_NET_FRAME_EXTENTS), without the shadow that a window may draw itself (_GTK_FRAME_EXTENTS).
    [[nodiscard]] std::optional<QRect> frameOf(std::uint32_t window) const;

private:
    X11Windows(xcb_connection_t* connection, std::uint32_t root);

    [[nodiscard]] std::vector<std::uint32_t> property(std::uint32_t window, const char* name) const;

    xcb_connection_t* m_connection;
    std::uint32_t m_root;
};

} // namespace quillmate
