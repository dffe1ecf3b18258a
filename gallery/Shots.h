#pragma once

#include "platform/appkit/NSHostingController.h"

#include <functional>
#include <string>
#include <vector>

#include <QSize>

class QQuickItem;

namespace quillmate
{

/// One view in one state.
struct Shot {
    /// Heading under which the page shows it.
    std::string view;
    std::string state;
    std::function<HostedView()> make;
    /// What is done once it is shown.
    std::function<void(QQuickItem&)> then;
    QSize size = QSize(440, 640);
    double textScale = 1;
};

/// All of them, in the page's order.
[[nodiscard]] std::vector<Shot> allShots();

} // namespace quillmate
