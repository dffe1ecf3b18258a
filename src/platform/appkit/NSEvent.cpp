#include "platform/appkit/NSEvent.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QWindow>

#include <algorithm>
#include <vector>

namespace quillmate
{

class NSEvent::Monitor
{
public:
    explicit Monitor(Handler handler)
        : m_handler(std::move(handler))
    {
    }

    Verdict ask(const NSEvent& event) const { return m_active ? m_handler(event) : Verdict::PassOn; }
    void end() { m_active = false; }

private:
    Handler m_handler;
    bool m_active = true;
};

namespace
{

NSEvent eventOf(const QKeyEvent& key)
{
    NSEvent event;
    const Qt::KeyboardModifiers modifiers = key.modifiers();
    event.modifierFlags = (modifiers.testFlag(Qt::ShiftModifier) ? NSEvent::shiftFlag : 0U) |
                          (modifiers.testFlag(Qt::ControlModifier) ? NSEvent::commandFlag : 0U) |
                          (modifiers.testFlag(Qt::MetaModifier) ? NSEvent::controlFlag : 0U) |
                          (modifiers.testFlag(Qt::AltModifier) ? NSEvent::optionFlag : 0U);
    // Key codes below this are the Unicode character on the key, in capitals; text() would give a control character
    // here.
    constexpr int firstSpecialKey = 0x01000000;
    if (key.key() > 0 && key.key() < firstSpecialKey) {
        const auto character = static_cast<char32_t>(key.key());
        const QString text = QString::fromUcs4(&character, 1);
        event.charactersIgnoringModifiers =
            (modifiers.testFlag(Qt::ShiftModifier) ? text : text.toLower()).toStdString();
    }
    return event;
}

/// Sees every event of the process before it is delivered.
class KeyFilter : public QObject
{
public:
    static std::vector<std::shared_ptr<NSEvent::Monitor>>& monitors()
    {
        static std::vector<std::shared_ptr<NSEvent::Monitor>> installed;
        return installed;
    }

    bool eventFilter(QObject* receiver, QEvent* event) override
    {
        // The window receives a key press first; what it hands on to its items is the same press again.
        if (event->type() != QEvent::KeyPress || !qobject_cast<QWindow*>(receiver)) {
            return false;
        }
        NSEvent key = eventOf(static_cast<const QKeyEvent&>(*event));
        key.window = receiver;
        const auto asked = monitors(); // A handler may add or remove monitors.
        return std::any_of(asked.rbegin(), asked.rend(),
                           [&key](const auto& monitor) { return monitor->ask(key) == NSEvent::Verdict::Swallow; });
    }
};

} // namespace

std::shared_ptr<NSEvent::Monitor> NSEvent::addLocalMonitorForEvents(std::uint64_t mask, Handler handler)
{
    auto* application = qobject_cast<QGuiApplication*>(QCoreApplication::instance());
    if (!application || (mask & keyDownMask) == 0) {
        return nullptr;
    }
    static QPointer<KeyFilter> filter;
    if (!filter) {
        filter = new KeyFilter;
        filter->setParent(application);
        application->installEventFilter(filter);
    }
    auto monitor = std::make_shared<Monitor>(std::move(handler));
    KeyFilter::monitors().push_back(monitor);
    return monitor;
}

void NSEvent::removeMonitor(const std::shared_ptr<Monitor>& monitor)
{
    std::erase(KeyFilter::monitors(), monitor);
    if (monitor) {
        monitor->end();
    }
}

} // namespace quillmate
