#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

class QObject;

namespace quillmate
{

/// A key-down event as the application's windows receive it.
class NSEvent
{
public:
    // Values of the platform's modifier flags and event masks.
    static constexpr std::uint32_t shiftFlag = 0x20000;
    static constexpr std::uint32_t controlFlag = 0x40000;
    static constexpr std::uint32_t optionFlag = 0x80000;
    /// The Command key; on a keyboard without one, Control.
    static constexpr std::uint32_t commandFlag = 0x100000;
    static constexpr std::uint64_t keyDownMask = 1024;

    std::uint32_t modifierFlags = 0;
    /// The window that has the keyboard.
    const QObject* window = nullptr;
    /// What the key would type without modifiers other than Shift; absent for a key that types nothing.
    std::optional<std::string> charactersIgnoringModifiers;

    /// An installed monitor; dropping it does not remove it.
    class Monitor;
    /// Whether the event is used up: then it reaches nothing else.
    enum class Verdict { PassOn, Swallow };
    using Handler = std::function<Verdict(const NSEvent&)>;

    /// Asks the handler about every event of the mask that is delivered to a window of this process, the newest monitor
    /// first. Null when no monitor can be installed. Main thread.
    static std::shared_ptr<Monitor> addLocalMonitorForEvents(std::uint64_t mask, Handler handler);
    /// Ends a monitor; may be called from within a handler. Main thread.
    static void removeMonitor(const std::shared_ptr<Monitor>& monitor);
};

} // namespace quillmate
