#include "platform/appkit/NSViewController.h"

#include <algorithm>
#include <utility>

namespace quillmate
{

NSViewController::~NSViewController()
{
    for (const auto& child : m_children) {
        child->m_parent = nullptr;
    }
}

void NSViewController::loadViewIfNeeded()
{
    if (!m_view) {
        m_view = loadView();
        viewDidLoad();
    }
}

std::shared_ptr<NSView> NSViewController::view()
{
    loadViewIfNeeded();
    return m_view;
}

void NSViewController::addChild(std::shared_ptr<NSViewController> child)
{
    child->removeFromParent();
    child->m_parent = this;
    m_children.push_back(std::move(child));
}

void NSViewController::removeFromParent()
{
    if (NSViewController* parent = std::exchange(m_parent, nullptr)) {
        const auto held = std::find_if(parent->m_children.begin(), parent->m_children.end(),
                                       [this](const auto& child) { return child.get() == this; });
        // The parent may hold the last reference to this very object.
        const auto self = std::move(*held);
        parent->m_children.erase(held);
    }
}

} // namespace quillmate
