#pragma once

#include "platform/appkit/NSHostingController.h"
#include "support/StateFixture.h"

#include <QAccessible>
#include <QQuickItem>
#include <QQuickWindow>

#include <memory>

namespace quillmate
{

/// A window that views are shown in, with a service behind it that offers no update.
class ViewFixture : public QObject, public StateFixture
{
public:
    ViewFixture();
    ~ViewFixture() override;

    /// Everything as at the start, and no version on offer; from here on a warning fails the test.
    void reset();
    /// Shows a view in the window, in place of the one before.
    void show(HostedView view);
    /// Shows an item that the caller keeps until `close`, likewise.
    void show(QQuickItem* item);
    /// Makes an item of this text, which follows the module's import, and shows it likewise.
    void showText(const QByteArray& qml);
    /// Takes what is shown out of the window without letting go of it, and back.
    void takeOut();
    void putBack();
    void close();

    /// The visible item of that name; null when there is none.
    [[nodiscard]] QQuickItem* item(const char* objectName) const;
    /// The same, whether it is visible or not.
    [[nodiscard]] QQuickItem* anyItem(const char* objectName) const;
    /// Where the visible item of that name is in the view.
    [[nodiscard]] QRectF placeOf(const char* objectName) const;
    /// What a screen reader finds in the window under that role and name; null when there is none.
    [[nodiscard]] QAccessibleInterface* accessible(QAccessible::Role role, const QString& name);
    [[nodiscard]] QQuickItem* accessibleItem(QAccessible::Role role, const QString& name);
    /// Presses it as a screen reader does; false when it is not there or cannot be pressed.
    [[nodiscard]] bool pressAccessible(QAccessible::Role role, const QString& name);
    /// Presses it by "mouse", by "accessible action", or by the key "Space" or "Return".
    void choose(QAccessible::Role role, const QString& name, const QString& manner);
    /// The names of the controls that Tab leads through, beginning with the item of that name.
    QStringList tabThrough(const char* objectName, int count);
    void click(QQuickItem* target);
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    /// Presses the key and lets go of it after it has repeated itself.
    void hold(Qt::Key key);
    /// Turns the wheel over the item, away from the user by so many notches.
    void wheel(QQuickItem* over, int notches);

    QQuickItem* shown() const { return m_shown; }
    QQuickWindow& window() { return m_window; }
    /// Keys that the window got since the last call.
    int takeKeys() { return std::exchange(m_keys, 0); }

    /// The rows of a table that have nothing but their name, the manner in which something is done.
    static void addManners(std::initializer_list<const char*> manners);

protected:
    bool eventFilter(QObject* receiver, QEvent* event) override;

private:
    QQuickWindow m_window;
    std::unique_ptr<NSHostingController> m_controller;
    std::unique_ptr<QQuickItem> m_made;
    QQuickItem* m_shown = nullptr;
    int m_keys = 0;
};

} // namespace quillmate
