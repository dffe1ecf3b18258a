#pragma once

#include <QColor>

#include <algorithm>
#include <cmath>

namespace quillmate
{

/// The contrast of two opaque colours (WCAG 2.1, "contrast ratio"); text wants 4.5 of it.
inline double contrastOf(const QColor& one, const QColor& other)
{
    const auto luminance = [](const QColor& color) {
        const auto linear = [](double part) {
            return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
        };
        return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
    };
    const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
    return (lighter + 0.05) / (darker + 0.05);
}

} // namespace quillmate
