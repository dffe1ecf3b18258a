#pragma once

#include <memory>
#include <string>

#include <QIODevice>

namespace quillmate
{

/// A request's body that is read once, without a way back. Qt sends a request again by itself when the connection
/// closes before the reply begins, also one that must not be done twice (RFC 9110, section 9.2.2); it cannot do so with
/// a body that has been read.
class UploadBody final : public QIODevice
{
public:
    explicit UploadBody(std::shared_ptr<const std::string> bytes);

    [[nodiscard]] bool isSequential() const override { return true; }
    [[nodiscard]] qint64 bytesAvailable() const override;
    /// Whether any of it may have left. An empty one leaves unseen, with the request's head.
    [[nodiscard]] bool wasRead() const { return m_read > 0 || m_bytes->empty(); }
    /// Never possible; without the words that the base has for it.
    bool seek(qint64) override { return false; }

protected:
    qint64 readData(char* data, qint64 maxSize) override;
    qint64 writeData(const char*, qint64) override { return -1; }

private:
    [[nodiscard]] qint64 left() const;

    const std::shared_ptr<const std::string> m_bytes;
    std::size_t m_read = 0;
};

} // namespace quillmate
