#include "platform/appkit/NSView.h"

#include "platform/appkit/WindowActivation.h"

#include <QQmlProperty>
#include <QQuickItem>
#include <QQuickWindow>

#include <algorithm>
#include <utility>

namespace quillmate
{
namespace
{

void fitTo(QQuickItem* item, const QQuickItem* parent)
{
    item->setPosition({0, 0});
    item->setSize(parent->size());
}

} // namespace

NSView::NSView()
    : NSView(std::make_unique<QQuickItem>())
{
}

NSView::NSView(std::unique_ptr<QQuickItem> item)
    : m_item(std::move(item))
{
}

NSView::~NSView()
{
    for (const auto& view : m_subviews) {
        view->m_superview = nullptr;
        view->m_item->setParentItem(nullptr);
    }
}

void NSView::addSubview(const std::shared_ptr<NSView>& view)
{
    view->removeFromSuperview();
    view->m_superview = this;
    m_subviews.push_back(view);
    // The newest child of an item is drawn last.
    view->m_item->setParentItem(m_item.get());
}

void NSView::removeFromSuperview()
{
    if (NSView* superview = std::exchange(m_superview, nullptr)) {
        QObject::disconnect(superview->m_item.get(), nullptr, m_item.get(), nullptr);
        m_item->setParentItem(nullptr);
        // The superview may hold the last reference to this very object.
        const auto held = std::find_if(superview->m_subviews.begin(), superview->m_subviews.end(),
                                       [this](const auto& view) { return view.get() == this; });
        const auto self = std::move(*held);
        superview->m_subviews.erase(held);
    }
}

void NSView::setHidden(bool hidden)
{
    m_item->setVisible(!hidden);
    m_item->setEnabled(!hidden); // An item that is out of sight would keep the keyboard.
}

bool NSView::hasKeyboard() const
{
    const QQuickWindow* window = m_item->window();
    const QQuickItem* focused = window ? window->contentItem() : nullptr;
    // The window's own word for it is empty while another window is active, as the browser is during a sign-in.
    while (focused && focused->scopedFocusItem()) {
        focused = focused->scopedFocusItem();
    }
    return focused && (focused == m_item.get() || m_item->isAncestorOf(focused));
}

void NSView::takeKeyboard()
{
    auto* home = m_item->property("keyboardHome").value<QQuickItem*>();
    if (!home) {
        home = m_item->nextItemInFocusChain(true);
    }
    if (home && m_item->isAncestorOf(home)) {
        home->forceActiveFocus(Qt::TabFocusReason);
    }
}

void NSView::bringWindowForward()
{
    if (QQuickWindow* window = m_item->window(); window && window->isVisible()) {
        bringForward(*window);
    }
}

void NSView::pinEdgesToSuperview()
{
    QQuickItem* parent = m_item->parentItem();
    QQuickItem* item = m_item.get();
    // What a host asks the outer view, the view that fills it knows. Telling it may make the host resize the outer
    // view.
    parent->setImplicitWidth(item->implicitWidth());
    parent->setImplicitHeight(item->implicitHeight());
    fitTo(item, parent);
    const auto fit = [item, parent] { fitTo(item, parent); };
    QObject::connect(parent, &QQuickItem::widthChanged, item, fit);
    QObject::connect(parent, &QQuickItem::heightChanged, item, fit);
}

} // namespace quillmate
