#pragma once

#include <condition_variable>
#include <filesystem>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

namespace quillmate
{

/// Brings the settings' writes safely to the disk on a thread of its own, so that no writer waits for the device:
/// within a second of the first write that is not there yet, or at once when asked.
class SettingsCheckpointer
{
public:
    /// `failed` is told, on this thread, why a checkpoint did not work. `tryAgain` is asked, on this thread, to do what
    /// could not be done before, and says whether it is done.
    SettingsCheckpointer(std::filesystem::path file, std::function<void(const std::string&)> failed,
                         std::function<bool()> tryAgain);
    /// Finishes what is outstanding.
    ~SettingsCheckpointer();
    SettingsCheckpointer(const SettingsCheckpointer&) = delete;
    SettingsCheckpointer& operator=(const SettingsCheckpointer&) = delete;

    /// Something was written. Returns at once; any thread.
    void written();
    /// Asks for a checkpoint now, without waiting for it. Any thread.
    void hurry();
    /// Asks `tryAgain` twice a second until it has done it, and at the end once more. Any thread.
    void keepTrying();

private:
    void run();

    std::filesystem::path m_file;
    std::function<void(const std::string&)> m_failed;
    std::function<bool()> m_tryAgain;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_dirty = false;
    bool m_hurry = false;
    bool m_outstanding = false;
    bool m_stop = false;
    std::thread m_thread; // Last: it uses the members above.
};

} // namespace quillmate
