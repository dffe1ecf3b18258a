#include "platform/appkit/X11Windows.h"

#include <QGuiApplication>
#include <QMargins>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <xcb/xcb.h>

namespace quillmate
{
namespace
{

struct Free {
    void operator()(void* reply) const { std::free(reply); } // xcb allocates its replies so.
};

template<typename Type>
using Reply = std::unique_ptr<Type, Free>;

constexpr std::uint32_t mostValues = 4096; // More windows than anybody has open.

/// The four values of a window's extents: left, right, top, bottom.
QMargins marginsOf(const std::vector<std::uint32_t>& extents)
{
    if (extents.size() != 4) {
        return {};
    }
    const auto at = [&extents](std::size_t index) { return static_cast<int>(extents[index]); };
    return {at(0), at(2), at(1), at(3)};
}

} // namespace

std::optional<X11Windows> X11Windows::ofThisProgram()
{
    auto* application = qobject_cast<QGuiApplication*>(QCoreApplication::instance());
    const auto* x11 = application ? application->nativeInterface<QNativeInterface::QX11Application>() : nullptr;
    xcb_connection_t* connection = x11 ? x11->connection() : nullptr;
    if (!connection) {
        return std::nullopt;
    }
    return X11Windows(connection, xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root);
}

X11Windows::X11Windows(xcb_connection_t* connection, std::uint32_t root)
    : m_connection(connection)
    , m_root(root)
{
}

std::vector<std::uint32_t> X11Windows::property(std::uint32_t window, const char* name) const
{
    const Reply<xcb_intern_atom_reply_t> atom(xcb_intern_atom_reply(
        m_connection, xcb_intern_atom(m_connection, 1, static_cast<std::uint16_t>(std::strlen(name)), name), nullptr));
    if (!atom || atom->atom == XCB_ATOM_NONE) {
        return {};
    }
    const Reply<xcb_get_property_reply_t> reply(xcb_get_property_reply(
        m_connection, xcb_get_property(m_connection, 0, window, atom->atom, XCB_GET_PROPERTY_TYPE_ANY, 0, mostValues),
        nullptr));
    if (!reply || reply->format != 32) {
        return {};
    }
    std::vector<std::uint32_t> values(reply->value_len);
    if (!values.empty()) {
        std::memcpy(values.data(), xcb_get_property_value(reply.get()), values.size() * sizeof values.front());
    }
    return values;
}

std::vector<std::uint32_t> X11Windows::managed() const
{
    auto windows = property(m_root, "_NET_CLIENT_LIST_STACKING");
    std::reverse(windows.begin(), windows.end());
    return windows;
}

std::uint32_t X11Windows::processOf(std::uint32_t window) const
{
    const auto values = property(window, "_NET_WM_PID");
    return values.empty() ? 0 : values.front();
}

bool X11Windows::isOnScreen(std::uint32_t window) const
{
    const Reply<xcb_get_window_attributes_reply_t> reply(
        xcb_get_window_attributes_reply(m_connection, xcb_get_window_attributes(m_connection, window), nullptr));
    return reply && reply->map_state == XCB_MAP_STATE_VIEWABLE;
}

std::optional<QRect> X11Windows::frameOf(std::uint32_t window) const
{
    const Reply<xcb_get_geometry_reply_t> size(
        xcb_get_geometry_reply(m_connection, xcb_get_geometry(m_connection, window), nullptr));
    const Reply<xcb_translate_coordinates_reply_t> place(xcb_translate_coordinates_reply(
        m_connection, xcb_translate_coordinates(m_connection, window, m_root, 0, 0), nullptr));
    if (!size || !place) {
        return std::nullopt;
    }
    return QRect(place->dst_x, place->dst_y, size->width, size->height)
        .marginsAdded(marginsOf(property(window, "_NET_FRAME_EXTENTS")))
        .marginsRemoved(marginsOf(property(window, "_GTK_FRAME_EXTENTS")));
}

} // namespace quillmate
