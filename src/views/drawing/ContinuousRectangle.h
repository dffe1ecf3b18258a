#pragma once

#include <QColor>
#include <QQuickPaintedItem>
#include <qqmlregistration.h>

namespace quillmate
{

/// A rectangle whose corners run continuously into its edges, filled and outlined. The outline lies inside the edges.
/// With a radius of half a side the corners are round.
class ContinuousRectangle : public QQuickPaintedItem
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(double radius MEMBER m_radius NOTIFY changed)
    Q_PROPERTY(QColor color MEMBER m_color NOTIFY changed)
    Q_PROPERTY(QColor borderColor MEMBER m_borderColor NOTIFY changed)
    Q_PROPERTY(double borderWidth MEMBER m_borderWidth NOTIFY changed)

public:
    explicit ContinuousRectangle(QQuickItem* parent = nullptr);

    void paint(QPainter* painter) override;

Q_SIGNALS:
    void changed();

private:
    double m_radius = 0;
    QColor m_color = Qt::transparent;
    QColor m_borderColor = Qt::transparent;
    double m_borderWidth = 1;
};

} // namespace quillmate
