#pragma once

#include "Shots.h"

#include <QImage>
#include <QQuickWindow>

namespace quillmate
{

/// The window in which the shots are taken.
class Stage
{
public:
    Stage();
    /// The picture of a shot, once two frames in a row have shown the same; null when the view cannot be made.
    QImage take(const Shot& shot);

private:
    QImage settle();

    QQuickWindow m_window;
};

} // namespace quillmate
