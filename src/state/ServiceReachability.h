#pragma once

#include <mutex>
#include <optional>
#include <string>

#include <QObject>

namespace quillmate
{

/// Whether the service could be reached when a person last wanted something of it. Read and told on any thread.
class ServiceReachability : public QObject
{
    Q_OBJECT

public:
    static ServiceReachability& shared();

    /// Why the service could not be reached, a sentence for people; nothing while it can, and before anybody asked.
    [[nodiscard]] std::optional<std::string> problem() const;

    /// A request was answered, whatever the answer.
    void answered() { tell(std::nullopt); }
    /// A request was not answered.
    void failed(const std::string& sentence) { tell(sentence); }

Q_SIGNALS:
    /// On the main thread, when what `problem` says has changed.
    void changed();

private:
    ServiceReachability();
    void tell(std::optional<std::string> problem);

    mutable std::mutex m_mutex;
    std::optional<std::string> m_problem;
};

} // namespace quillmate
