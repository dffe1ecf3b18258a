#include "Page.h"

namespace quillmate
{

QString galleryPage(const std::vector<GalleryEntry>& entries)
{
    QString page = QStringLiteral("<!doctype html>\n<html lang=\"en\">\n<meta charset=\"utf-8\">\n"
                                  "<title>Quillmate: every view</title>\n<style>\n"
                                  "body { font: 15px sans-serif; margin: 2em; background: #e4e4ea; color: #1c1c1f }\n"
                                  "section { display: flex; flex-wrap: wrap; gap: 2em }\n"
                                  "figure { margin: 0 }\nfigcaption { padding: .4em 0 }\n"
                                  "img { border-radius: 8px; vertical-align: top; max-width: 100% }\n</style>\n"
                                  "<h1>Quillmate: every view</h1>\n");
    std::string view;
    for (const GalleryEntry& entry : entries) {
        if (entry.view != view) {
            page += view.empty() ? QString() : QStringLiteral("</section>\n");
            view = entry.view;
            page += QStringLiteral("<h2>%1</h2>\n<section>\n").arg(QString::fromStdString(view).toHtmlEscaped());
        }
        const QString state = QString::fromStdString(entry.state).toHtmlEscaped();
        page += QStringLiteral("<figure><figcaption>%1</figcaption><img src=\"%2\" alt=\"%1, light\"> "
                               "<img src=\"%3\" alt=\"%1, dark\"></figure>\n")
                    .arg(state, entry.light, entry.dark);
    }
    return page + QStringLiteral("</section>\n</html>\n");
}

} // namespace quillmate
