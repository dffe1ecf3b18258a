#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <memory>
#include <mutex>
#include <string>

namespace quillmate
{

/// While it lives, no print waits for whoever reads the lines: they queue up here, and a thread of its own writes them.
/// What would make the queue longer than `limit` is left out, and a line says there how many lines that were. One per
/// process.
class PrintQueue
{
public:
    static constexpr std::size_t limit = std::size_t(4) * 1024 * 1024; ///< bytes

    /// The lines of every print go to the descriptor.
    explicit PrintQueue(int descriptor);
    /// Writes what is queued, for as long as `patience` at most; when that was not enough, later lines are lost.
    ~PrintQueue();
    PrintQueue(const PrintQueue&) = delete;
    PrintQueue& operator=(const PrintQueue&) = delete;

    /// Whether a line of so many bytes has room; counts it as left out when not.
    bool hasRoomFor(std::size_t size);
    /// Adds a line with its newline. Any thread.
    void add(std::string line);

private:
    static constexpr std::chrono::seconds patience{2};

    /// What the thread holds as well: where nobody reads it never comes back from a write, and is left behind.
    struct Lines {
        void push(std::string line);
        void pushLeftOut();
        void write(int descriptor);

        std::mutex mutex;
        std::condition_variable changed;
        std::deque<std::string> queued;
        std::size_t bytes = 0;
        std::size_t leftOut = 0;
        bool ending = false;
        bool ended = false;
    };
    const int m_descriptor;
    const std::shared_ptr<Lines> m_lines;
};

} // namespace quillmate
