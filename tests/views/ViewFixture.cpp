#include "views/ViewFixture.h"

#include "platform/appkit/ViewEngine.h"
#include "views/ViewsModule.h"

#include <QKeyEvent>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QRegularExpression>
#include <QTest>

#include <utility>

namespace quillmate
{
namespace
{

QQuickItem* find(QQuickItem* item, const QString& objectName, bool visibleOnly)
{
    if (visibleOnly && !item->isVisible()) {
        return nullptr;
    }
    // The newest first: a view that is going may be there still.
    const auto children = item->childItems();
    for (auto child = children.rbegin(); child != children.rend(); ++child) {
        if (auto* found = find(*child, objectName, visibleOnly)) {
            return found;
        }
    }
    return item->objectName() == objectName ? item : nullptr;
}

QAccessibleInterface* find(QAccessibleInterface* within, QAccessible::Role role, const QString& name)
{
    for (int i = 0; within && i < within->childCount(); ++i) {
        QAccessibleInterface* child = within->child(i);
        if (child && !child->state().invisible && child->role() == role && child->text(QAccessible::Name) == name) {
            return child;
        }
        if (auto* found = find(child, role, name)) {
            return found;
        }
    }
    return nullptr;
}

} // namespace

ViewFixture::ViewFixture()
{
    registerViews();
    m_window.resize(460, 640);
    m_window.installEventFilter(this);
    m_window.show();
    m_window.requestActivate();
    if (!QTest::qWaitForWindowActive(&m_window)) {
        qFatal("The window does not become active.");
    }
}

ViewFixture::~ViewFixture()
{
    close();
}

void ViewFixture::reset()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral(".*")));
    close();
    StateFixture::reset();
    server().reply("GET /api/v1" + versionCheck(), "{}");
    m_window.resize(460, 640);
    log().take();
    m_keys = 0;
}

void ViewFixture::show(HostedView view)
{
    close();
    m_controller = std::make_unique<NSHostingController>(std::move(view));
    m_shown = m_controller->view()->item();
    putBack();
}

void ViewFixture::show(QQuickItem* item)
{
    close();
    m_shown = item;
    putBack();
}

void ViewFixture::showText(const QByteArray& qml)
{
    close();
    QQmlComponent component(&ViewEngine::shared());
    component.setData("import QtQuick\nimport Quillmate.Views\n" + qml, QUrl(QStringLiteral("qrc:/made-by-test.qml")));
    m_made.reset(qobject_cast<QQuickItem*>(component.create()));
    QVERIFY2(m_made, qPrintable(component.errorString()));
    m_shown = m_made.get();
    m_shown->setParentItem(m_window.contentItem());
}

void ViewFixture::takeOut()
{
    m_shown->setParentItem(nullptr);
}

void ViewFixture::putBack()
{
    m_shown->setParentItem(m_window.contentItem());
    m_shown->setSize(m_window.size());
}

void ViewFixture::close()
{
    if (m_shown) {
        takeOut();
        m_shown = nullptr;
    }
    m_made.reset();
    m_controller.reset();
}

QQuickItem* ViewFixture::item(const char* objectName) const
{
    return find(m_window.contentItem(), QString::fromLatin1(objectName), true);
}

QQuickItem* ViewFixture::anyItem(const char* objectName) const
{
    return find(m_window.contentItem(), QString::fromLatin1(objectName), false);
}

QRectF ViewFixture::placeOf(const char* objectName) const
{
    const QQuickItem* found = item(objectName);
    return found ? found->mapRectToItem(m_shown, {QPointF(), found->size()}) : QRectF();
}

QAccessibleInterface* ViewFixture::accessible(QAccessible::Role role, const QString& name)
{
    return find(QAccessible::queryAccessibleInterface(&m_window), role, name);
}

QQuickItem* ViewFixture::accessibleItem(QAccessible::Role role, const QString& name)
{
    const QAccessibleInterface* found = accessible(role, name);
    return found ? qobject_cast<QQuickItem*>(found->object()) : nullptr;
}

void ViewFixture::choose(QAccessible::Role role, const QString& name, const QString& manner)
{
    if (manner == QLatin1String("accessible action")) {
        QVERIFY(pressAccessible(role, name));
    } else if (manner == QLatin1String("mouse")) {
        click(accessibleItem(role, name));
    } else {
        QQuickItem* target = accessibleItem(role, name);
        QVERIFY(target);
        target->forceActiveFocus(Qt::TabFocusReason);
        press(manner == QLatin1String("Space") ? Qt::Key_Space : Qt::Key_Return);
    }
}

QStringList ViewFixture::tabThrough(const char* objectName, int count)
{
    item(objectName)->forceActiveFocus(Qt::TabFocusReason);
    QStringList names;
    for (int i = 0; i < count; ++i) {
        names << QAccessible::queryAccessibleInterface(m_window.activeFocusItem())->text(QAccessible::Name);
        press(Qt::Key_Tab);
    }
    return names;
}

bool ViewFixture::pressAccessible(QAccessible::Role role, const QString& name)
{
    QAccessibleInterface* found = accessible(role, name);
    QAccessibleActionInterface* actions = found ? found->actionInterface() : nullptr;
    if (!actions || !actions->actionNames().contains(QAccessibleActionInterface::pressAction())) {
        return false;
    }
    actions->doAction(QAccessibleActionInterface::pressAction());
    return true;
}

void ViewFixture::click(QQuickItem* target)
{
    QVERIFY(target);
    m_window.grabWindow(); // Lays out what is new, so that the click meets it.
    const QPointF centre = target->mapToScene({target->width() / 2, target->height() / 2});
    QTest::mouseClick(&m_window, Qt::LeftButton, Qt::NoModifier, centre.toPoint());
}

void ViewFixture::press(Qt::Key key, Qt::KeyboardModifiers modifiers)
{
    QTest::keyClick(&m_window, key, modifiers);
}

void ViewFixture::hold(Qt::Key key)
{
    const auto send = [this, key](QEvent::Type type, bool repeated) {
        QKeyEvent event(type, key, {}, {}, repeated);
        QCoreApplication::sendEvent(&m_window, &event);
    };
    send(QEvent::KeyPress, false);
    for (int i = 0; i < 3; ++i) { // As X tells of it.
        send(QEvent::KeyRelease, true);
        send(QEvent::KeyPress, true);
    }
    send(QEvent::KeyRelease, false);
}

void ViewFixture::wheel(QQuickItem* over, int notches)
{
    const QPointF place = over->mapToScene({over->width() / 2, over->height() / 2});
    QWheelEvent event(place, m_window.mapToGlobal(place), {}, {0, 120 * notches}, Qt::NoButton, Qt::NoModifier,
                      Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(&m_window, &event);
}

void ViewFixture::addManners(std::initializer_list<const char*> manners)
{
    QTest::addColumn<QString>("manner");
    for (const char* manner : manners) {
        QTest::newRow(manner) << QString::fromLatin1(manner);
    }
}

bool ViewFixture::eventFilter(QObject* receiver, QEvent* event)
{
    if (event->type() == QEvent::KeyPress) {
        // The modifiers are pressed on the way.
        const int key = static_cast<QKeyEvent*>(event)->key();
        m_keys += key < Qt::Key_Shift || key > Qt::Key_Alt ? 1 : 0;
    }
    return QObject::eventFilter(receiver, event);
}

} // namespace quillmate
