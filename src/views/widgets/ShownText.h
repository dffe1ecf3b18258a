#pragma once

#include <string>

#include <QString>

namespace quillmate
{

/// What a view shows of a text that may be of any length and hold any character.
struct ShownText {
    /// The text, or its beginning: laying out a text of megabytes would hold the panel up for many seconds. Characters
    /// that have no picture, or that a text document takes for its own marks, are shown as U+FFFD.
    QString text;
    /// Says how much is shown; empty when all of it is.
    QString note;

    static ShownText of(const std::string& text);
};

/// The longest text that is shown whole, in UTF-16 units; less where it is laid out slowly, as emoji and stacked marks
/// are.
constexpr qsizetype longestShownText = 16'000;

} // namespace quillmate
