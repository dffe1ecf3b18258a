#pragma once

#include "platform/appkit/NSView.h"

#include <memory>
#include <vector>

namespace quillmate
{

/// Owns a view and what belongs to it. The view is made when it is first asked for. Main thread only.
class NSViewController
{
public:
    NSViewController() = default;
    virtual ~NSViewController();
    NSViewController(const NSViewController&) = delete;
    NSViewController& operator=(const NSViewController&) = delete;

    /// Makes the view, then runs `viewDidLoad`; nothing when that was done before.
    void loadViewIfNeeded();
    /// The view, made now if need be.
    [[nodiscard]] std::shared_ptr<NSView> view();

    void addChild(std::shared_ptr<NSViewController> child);
    void removeFromParent();
    [[nodiscard]] const std::vector<std::shared_ptr<NSViewController>>& children() const { return m_children; }

    /// Runs once the view is there.
    virtual void viewDidLoad() {}

protected:
    /// Makes the view; an empty one unless a subclass knows better.
    virtual std::shared_ptr<NSView> loadView() { return std::make_shared<NSView>(); }

private:
    std::shared_ptr<NSView> m_view;
    std::vector<std::shared_ptr<NSViewController>> m_children;
    NSViewController* m_parent = nullptr;
};

} // namespace quillmate
