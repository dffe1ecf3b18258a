#pragma once

#include <mutex>
#include <utility>

namespace quillmate
{

/// A field that any thread reads and writes whole.
template<typename T>
class Synchronized
{
public:
    Synchronized() = default;
    explicit Synchronized(T value)
        : m_value(std::move(value))
    {
    }

    [[nodiscard]] T get() const
    {
        const std::lock_guard lock(m_mutex);
        return m_value;
    }
    void set(T value)
    {
        const std::lock_guard lock(m_mutex);
        std::swap(m_value, value); // The old value is destroyed with the parameter, outside the lock.
    }
    /// Looks at or changes the value in place; the function must not come back to this field.
    template<typename Function>
    decltype(auto) with(Function function)
    {
        const std::lock_guard lock(m_mutex);
        return function(m_value);
    }

private:
    mutable std::mutex m_mutex;
    T m_value{};
};

} // namespace quillmate
