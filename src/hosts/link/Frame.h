#pragma once

#include "base/Result.h"

#include <cstddef>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

namespace quillmate
{

// The framing of WebExtension native messaging: a 32-bit length in native byte order, then that many bytes.

/// What a frame to this process may hold.
constexpr std::size_t largestIncomingFrame = 256UL * 1024 * 1024;
/// What a browser takes from a native process, less the length itself.
constexpr std::size_t largestOutgoingFrame = 1024UL * 1024 - 4;

/// Reads frames from a descriptor on one thread, until the other end closes it or `stopDescriptor` becomes readable.
class FrameReader
{
public:
    using Next = Result<std::optional<std::string>, std::string>;

    /// Both descriptors stay the caller's; `stopDescriptor` may be -1.
    FrameReader(int descriptor, int stopDescriptor)
        : m_descriptor(descriptor)
        , m_stopDescriptor(stopDescriptor)
    {
    }

    /// The next frame's bytes; none at the end of the input between frames, and when told to stop. The failure is a
    /// sentence: a length over the limit, an end inside a frame, a descriptor that cannot be read. Memory is taken as
    /// the bytes arrive, never for a length alone.
    Next next();

private:
    enum class Outcome { Whole, End, Stopped, Failed };
    /// Fills as much as there is; `got` tells how much.
    Outcome read(char* target, std::size_t size, std::size_t& got) const;

    int m_descriptor;
    int m_stopDescriptor;
};

/// Writes frames to a descriptor, each whole. Any thread.
class FrameWriter
{
public:
    explicit FrameWriter(int descriptor)
        : m_descriptor(descriptor)
    {
    }

    /// False when the frame is too large or nobody reads any more.
    bool write(std::string_view bytes) const;

private:
    int m_descriptor;
    mutable std::mutex m_mutex;
};

} // namespace quillmate
