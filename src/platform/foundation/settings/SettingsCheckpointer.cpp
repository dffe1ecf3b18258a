#include "platform/foundation/settings/SettingsCheckpointer.h"

#include "platform/foundation/settings/SettingsDatabase.h"

#include <chrono>
#include <utility>

namespace quillmate
{
namespace
{

// Leaves half of the promised second for the device.
constexpr auto delay = std::chrono::milliseconds(500);

} // namespace

SettingsCheckpointer::SettingsCheckpointer(std::filesystem::path file, std::function<void(const std::string&)> failed,
                                           std::function<bool()> tryAgain)
    : m_file(std::move(file))
    , m_failed(std::move(failed))
    , m_tryAgain(std::move(tryAgain))
    , m_thread([this] { run(); })
{
}

SettingsCheckpointer::~SettingsCheckpointer()
{
    {
        const std::lock_guard lock(m_mutex);
        m_stop = true;
    }
    m_changed.notify_one();
    m_thread.join();
}

void SettingsCheckpointer::written()
{
    {
        const std::lock_guard lock(m_mutex);
        if (std::exchange(m_dirty, true)) {
            return;
        }
    }
    m_changed.notify_one();
}

void SettingsCheckpointer::hurry()
{
    {
        const std::lock_guard lock(m_mutex);
        m_hurry = true;
    }
    m_changed.notify_one();
}

void SettingsCheckpointer::keepTrying()
{
    {
        const std::lock_guard lock(m_mutex);
        m_outstanding = true;
    }
    m_changed.notify_one();
}

void SettingsCheckpointer::run()
{
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_changed.wait(lock, [this] { return m_dirty || m_outstanding || m_stop; });
        m_changed.wait_for(lock, delay, [this] { return m_hurry || m_stop; });
        m_hurry = false;
        if (std::exchange(m_outstanding, false)) {
            lock.unlock();
            const bool done = m_tryAgain();
            lock.lock();
            m_outstanding = m_outstanding || !done;
        }
        if (std::exchange(m_dirty, false)) {
            lock.unlock();
            if (const auto done = SettingsDatabase::checkpoint(m_file); !done) {
                m_failed(done.error().text);
            }
            lock.lock();
        }
        if (m_stop && !m_dirty) {
            return;
        }
    }
}

} // namespace quillmate
