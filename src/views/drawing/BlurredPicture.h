#pragma once

#include <QImage>
#include <QPointer>
#include <QQuickItem>
#include <QQuickItemGrabResult>
#include <QQuickPaintedItem>
#include <QQuickWindow>
#include <QSharedPointer>
#include <QTimer>
#include <qqmlregistration.h>

namespace quillmate
{

/// Shows another item out of focus: grabs it, blurs the picture on the CPU (the software scene graph draws no shader
/// effects), and does so again whenever a frame has shown something new. Costs nothing while nothing moves.
class BlurredPicture : public QQuickPaintedItem
{
    Q_OBJECT
    QML_ELEMENT
    /// The item shown, which must be visible in the same window.
    Q_PROPERTY(QQuickItem* source MEMBER m_source NOTIFY sourceChanged REQUIRED)
    /// The blur's standard deviation, in points.
    Q_PROPERTY(double blurRadius MEMBER m_blurRadius NOTIFY blurRadiusChanged)

public:
    explicit BlurredPicture(QQuickItem* parent = nullptr);

    void paint(QPainter* painter) override;

    /// The picture shown; null before the first.
    [[nodiscard]] const QImage& picture() const { return m_blurred; }

Q_SIGNALS:
    void sourceChanged();
    void blurRadiusChanged();
    void pictureChanged();

protected:
    void itemChange(ItemChange change, const ItemChangeData& value) override;

private:
    void follow(QQuickWindow* window);
    void frameShown();
    void grab();
    void take();
    void blurAgain();

    QPointer<QQuickItem> m_source;
    double m_blurRadius = 3;
    QImage m_sharp;
    QImage m_blurred;
    QPointer<QQuickWindow> m_window;
    QSharedPointer<QQuickItemGrabResult> m_grab;
    int m_framesSinceGrab = 0;
    QTimer m_pause; // Between two grabs, so that a spinner below does not take all there is.
};

/// The picture with every pixel spread over its surroundings: three box filters, which come within a few percent of a
/// Gaussian of that standard deviation in pixels. Outside the picture everything is clear.
QImage blurred(const QImage& picture, double standardDeviation);

} // namespace quillmate
