#pragma once

#include <string>
#include <vector>

#include <QString>

namespace quillmate
{

/// One picture as the page shows it.
struct GalleryEntry {
    std::string view;
    std::string state;
    /// Names of the files beside the page, light and dark.
    QString light;
    QString dark;
};

/// The page that shows the pictures side by side, under the headings of their views.
[[nodiscard]] QString galleryPage(const std::vector<GalleryEntry>& entries);

} // namespace quillmate
