#include "platform/foundation/text/PrintQueue.h"

#include "base/Descriptors.h"
#include "platform/foundation/text/print.h"

#include <thread>
#include <utility>

namespace quillmate
{

PrintQueue::PrintQueue(int descriptor)
    : m_descriptor(descriptor)
    , m_lines(std::make_shared<Lines>())
{
    std::thread([lines = m_lines, descriptor] { lines->write(descriptor); }).detach();
    setPrintDescriptor(descriptor, this);
}

PrintQueue::~PrintQueue()
{
    constexpr int nowhere = -1;
    bool isWritten = false;
    {
        std::unique_lock lock(m_lines->mutex);
        m_lines->pushLeftOut();
        m_lines->ending = true;
        m_lines->changed.notify_all();
        isWritten = m_lines->changed.wait_for(lock, patience, [this] { return m_lines->ended; });
    }
    setPrintDescriptor(isWritten ? m_descriptor : nowhere);
}

bool PrintQueue::hasRoomFor(std::size_t size)
{
    const std::lock_guard lock(m_lines->mutex);
    const bool hasRoom = m_lines->bytes + size <= limit;
    m_lines->leftOut += hasRoom ? 0 : 1;
    return hasRoom;
}

void PrintQueue::add(std::string line)
{
    const std::lock_guard lock(m_lines->mutex);
    m_lines->pushLeftOut();
    m_lines->push(std::move(line));
    m_lines->changed.notify_all();
}

void PrintQueue::Lines::push(std::string line)
{
    bytes += line.size();
    queued.push_back(std::move(line));
}

void PrintQueue::Lines::pushLeftOut()
{
    if (const std::size_t count = std::exchange(leftOut, 0); count > 0) {
        push("Lines left out here: " + std::to_string(count) + ". They were not read in time, or too long.\n");
    }
}

void PrintQueue::Lines::write(int descriptor)
{
    std::unique_lock lock(mutex);
    for (;;) {
        changed.wait(lock, [this] { return !queued.empty() || ending; });
        if (queued.empty()) {
            break;
        }
        const std::string line = std::move(queued.front());
        queued.pop_front();
        lock.unlock();
        writeWhole(descriptor, {line}); // Where nobody reads any more there is no second place to say so.
        lock.lock();
        bytes -= line.size();
    }
    ended = true;
    changed.notify_all();
}

} // namespace quillmate
