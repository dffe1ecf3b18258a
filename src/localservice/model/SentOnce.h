#pragma once

#include <QByteArray>
#include <QIODevice>

#include <utility>

namespace quillmate::localservice
{

/// A request's body that can be read once only. Qt sends a request again by itself when the server hangs up before it
/// answers, a POST too (against RFC 9110, 9.2.2), unless its body cannot be had again; here the model would write
/// everything twice.
class SentOnce final : public QIODevice
{
public:
    explicit SentOnce(QByteArray bytes)
        : m_rest(std::move(bytes))
    {
        open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    }

    [[nodiscard]] bool isSequential() const override { return true; }
    [[nodiscard]] qint64 bytesAvailable() const override { return m_rest.size() + QIODevice::bytesAvailable(); }
    /// Refused quietly; the base's own refusal is a warning on standard error.
    bool seek(qint64) override { return false; }

protected:
    qint64 readData(char* data, qint64 maxSize) override;
    qint64 writeData(const char*, qint64) override { return -1; }

private:
    QByteArray m_rest;
};

} // namespace quillmate::localservice
