#pragma once

#include "hosts/link/Frame.h"

#include <QStringList>

#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace quillmate
{

/// Both ends of a pipe.
class Pipe
{
public:
    Pipe()
    {
        if (::pipe2(m_ends, O_CLOEXEC) != 0) {
            qFatal("There is no pipe to be had.");
        }
    }
    ~Pipe()
    {
        closeOutput();
        closeInput();
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    [[nodiscard]] int output() const { return m_ends[0]; }
    [[nodiscard]] int input() const { return m_ends[1]; }
    void closeInput() { end(m_ends[1]); }
    void closeOutput() { end(m_ends[0]); }
    void write(const std::string& bytes) const
    {
        for (std::size_t done = 0; done < bytes.size();) {
            const ssize_t count = ::write(m_ends[1], bytes.data() + done, bytes.size() - done);
            if (count < 0) {
                return; // The reader has gone, which is for the test to find.
            }
            done += static_cast<std::size_t>(count);
        }
    }

private:
    static void end(int& descriptor)
    {
        if (descriptor >= 0) {
            ::close(descriptor);
            descriptor = -1;
        }
    }

    int m_ends[2] = {-1, -1};
};

inline std::string prefix(std::uint32_t length)
{
    std::string bytes(sizeof length, '\0');
    std::memcpy(bytes.data(), &length, sizeof length);
    return bytes;
}

inline std::string framed(const std::string& body)
{
    return prefix(static_cast<std::uint32_t>(body.size())) + body;
}

/// Everything that comes out: the frames, and how it ended.
inline QStringList readAll(FrameReader& reader)
{
    QStringList seen;
    for (;;) {
        const auto next = reader.next();
        if (!next) {
            return seen << "broken: " + QString::fromStdString(next.error());
        }
        if (!next.value()) {
            return seen << QStringLiteral("end");
        }
        seen << "frame: " + QString::fromStdString(*next.value());
    }
}

} // namespace quillmate
