// Renders an SVG picture into a square PNG, for the icon themes of desktops that take no SVG.

#include <QImage>
#include <QPainter>
#include <QSvgRenderer>

#include <cstdio>
#include <cstdlib>

int main(int argc, char** argv)
{
    const int size = argc == 4 ? std::atoi(argv[2]) : 0;
    if (size <= 0) {
        std::fputs("Usage: render-icon PICTURE.svg SIZE ICON.png\n", stderr);
        return 2;
    }
    QSvgRenderer picture(QString::fromLocal8Bit(argv[1]));
    QImage icon(size, size, QImage::Format_ARGB32);
    icon.fill(Qt::transparent);
    QPainter painter(&icon);
    painter.setRenderHint(QPainter::Antialiasing);
    picture.render(&painter);
    painter.end();
    if (!picture.isValid() || !icon.save(QString::fromLocal8Bit(argv[3]), "PNG")) {
        std::fprintf(stderr, "render-icon: cannot render %s into %s\n", argv[1], argv[3]);
        return 1;
    }
    return 0;
}
