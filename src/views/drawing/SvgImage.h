#pragma once

#include <QColor>
#include <QQuickPaintedItem>
#include <QSvgRenderer>
#include <qqmlregistration.h>

namespace quillmate
{

/// One of the program's own pictures, fitted into the item with its aspect ratio kept; a symbol takes the colour it is
/// given.
class SvgImage : public QQuickPaintedItem
{
    Q_OBJECT
    QML_ELEMENT
    /// Name of the resource, without its ending: "quillmateLogo", "symbols/wand.and.stars".
    Q_PROPERTY(QString name READ name WRITE setName NOTIFY nameChanged)
    /// Drawn in this colour alone; transparent leaves the picture's own colours.
    Q_PROPERTY(QColor tint READ tint WRITE setTint NOTIFY tintChanged)
    /// Whether there is such a picture.
    Q_PROPERTY(bool available READ isAvailable NOTIFY nameChanged)

public:
    explicit SvgImage(QQuickItem* parent = nullptr);

    [[nodiscard]] QString name() const { return m_name; }
    void setName(const QString& name);
    [[nodiscard]] QColor tint() const { return m_tint; }
    void setTint(const QColor& tint);
    [[nodiscard]] bool isAvailable() const { return m_renderer.isValid(); }

    void paint(QPainter* painter) override;

Q_SIGNALS:
    void nameChanged();
    void tintChanged();

private:
    QString m_name;
    QColor m_tint = Qt::transparent;
    QSvgRenderer m_renderer;
};

} // namespace quillmate
