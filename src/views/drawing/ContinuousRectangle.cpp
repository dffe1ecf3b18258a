#include "views/drawing/ContinuousRectangle.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <numbers>

namespace quillmate
{
namespace
{

/// One cubic per corner. It starts further out than a circle of the radius would, so that the curvature grows from
/// nearly nothing, and passes through the same point in the middle of the corner; where a side is too short for that,
/// it becomes that circle.
QPainterPath outline(const QRectF& area, double radius)
{
    constexpr double reach = 1.53;
    // How far the middle of a quarter circle stays away from both edges, for radius 1.
    constexpr double middle = 1 - 1 / std::numbers::sqrt2;

    const double half = std::min(area.width(), area.height()) / 2;
    const double r = std::clamp(radius, 0.0, half);
    const double start = std::min(reach * r, half);
    // The middle of a cubic from (start, 0) to (0, start) with handles (handle, 0) and (0, handle) lies at
    // (start + 3 handle) / 8.
    const double handle = (8 * middle * r - start) / 3;

    const double left = area.left();
    const double top = area.top();
    const double right = area.right();
    const double bottom = area.bottom();
    QPainterPath path;
    path.moveTo(left + start, top);
    path.lineTo(right - start, top);
    path.cubicTo(right - handle, top, right, top + handle, right, top + start);
    path.lineTo(right, bottom - start);
    path.cubicTo(right, bottom - handle, right - handle, bottom, right - start, bottom);
    path.lineTo(left + start, bottom);
    path.cubicTo(left + handle, bottom, left, bottom - handle, left, bottom - start);
    path.lineTo(left, top + start);
    path.cubicTo(left, top + handle, left + handle, top, left + start, top);
    path.closeSubpath();
    return path;
}

} // namespace

ContinuousRectangle::ContinuousRectangle(QQuickItem* parent)
    : QQuickPaintedItem(parent)
{
    setAntialiasing(true);
    connect(this, &ContinuousRectangle::changed, this, [this] { update(); });
}

void ContinuousRectangle::paint(QPainter* painter)
{
    const bool outlined = m_borderWidth > 0 && m_borderColor.alpha() > 0;
    const double inset = outlined ? m_borderWidth / 2 : 0;
    const QRectF area = boundingRect().adjusted(inset, inset, -inset, -inset);
    if (area.isEmpty()) {
        return;
    }
    painter->setPen(outlined ? QPen(m_borderColor, m_borderWidth) : QPen(Qt::NoPen));
    painter->setBrush(m_color);
    painter->drawPath(outline(area, m_radius - inset));
}

} // namespace quillmate
