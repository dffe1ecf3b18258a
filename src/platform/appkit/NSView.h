#pragma once

#include <memory>
#include <vector>

class QQuickItem;

namespace quillmate
{

/// An area of a window that holds other areas, later ones on top. Backed by a Qt Quick item. Main thread only.
class NSView
{
public:
    /// An empty area.
    NSView();
    /// An area that shows the item and owns it.
    explicit NSView(std::unique_ptr<QQuickItem> item);
    ~NSView();
    NSView(const NSView&) = delete;
    NSView& operator=(const NSView&) = delete;

    /// The item, for a host that places it in its window.
    [[nodiscard]] QQuickItem* item() const { return m_item.get(); }

    /// Puts the view on top of what is there.
    void addSubview(const std::shared_ptr<NSView>& view);
    void removeFromSuperview();
    [[nodiscard]] const std::vector<std::shared_ptr<NSView>>& subviews() const { return m_subviews; }

    /// A hidden view stays where it is; nothing of it is seen, can be reached or keeps the keyboard.
    void setHidden(bool hidden);

    /// Whether the keyboard is on something within, or will be once the window is active again.
    [[nodiscard]] bool hasKeyboard() const;
    /// Puts the keyboard where the view has its home for it, its item's property "keyboardHome", and shows where that
    /// is; without one on the first control within.
    void takeKeyboard();

    /// Brings the window that shows the view before the others, with the keyboard, as far as the desktop lets it;
    /// nothing while it is closed.
    void bringWindowForward();

    /// Keeps the four edges equal to those of the view it was added to.
    void pinEdgesToSuperview();

private:
    std::unique_ptr<QQuickItem> m_item;
    std::vector<std::shared_ptr<NSView>> m_subviews;
    NSView* m_superview = nullptr;
};

} // namespace quillmate
