#include "views/drawing/SvgImage.h"

#include "platform/foundation/Bundle.h"

#include <QImage>
#include <QPainter>

namespace quillmate
{

SvgImage::SvgImage(QQuickItem* parent)
    : QQuickPaintedItem(parent)
{
    setAntialiasing(true);
    m_renderer.setAspectRatioMode(Qt::KeepAspectRatio);
}

void SvgImage::setName(const QString& name)
{
    if (m_name == name) {
        return;
    }
    m_name = name;
    const auto contents = Bundle::main().contents(name.toStdString(), "svg");
    m_renderer.load(QByteArray::fromStdString(contents.value_or("")));
    Q_EMIT nameChanged();
    update();
}

void SvgImage::setTint(const QColor& tint)
{
    if (m_tint != tint) {
        m_tint = tint;
        Q_EMIT tintChanged();
        update();
    }
}

void SvgImage::paint(QPainter* painter)
{
    if (!m_renderer.isValid()) {
        return;
    }
    if (m_tint.alpha() == 0) {
        m_renderer.render(painter, boundingRect());
        return;
    }
    const double scale = painter->device()->devicePixelRatioF();
    QImage image((boundingRect().size() * scale).toSize(), QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(scale);
    image.fill(Qt::transparent);
    QPainter symbol(&image);
    m_renderer.render(&symbol, boundingRect());
    symbol.setCompositionMode(QPainter::CompositionMode_SourceIn);
    symbol.fillRect(boundingRect(), m_tint);
    symbol.end();
    painter->drawImage(QPointF(), image);
}

} // namespace quillmate
