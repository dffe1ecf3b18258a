#pragma once

#include <memory>

namespace quillmate
{

class ComposeSessionViewController;

/// Links the session panel to the controller that shows it. The link is weak: the controller owns the panel, and a
/// strong one back would keep the two of them, and the controller's 12-hour check, alive after the window has closed.
struct Coordinator {
    std::weak_ptr<ComposeSessionViewController> viewController;
};

} // namespace quillmate
