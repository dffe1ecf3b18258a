#pragma once

#include "hosts/preview/mail/MessageStore.h"
#include "platform/foundation/WorkQueue.h"
#include "platform/mailkit/MEHandlers.h"

#include <QObject>
#include <functional>
#include <memory>
#include <stop_token>

namespace quillmate
{

/// Reads messages on a thread of its own, one task after the other, and hands the results over on the main thread.
/// Results that come after this object's end are dropped.
class MessageReader : public QObject
{
    Q_OBJECT

public:
    using Listed = std::function<void(std::shared_ptr<const MessageEntries>)>;
    using Loaded = std::function<void(std::shared_ptr<const Result<MailDocument, MailFailure>>)>;

    explicit MessageReader(QObject* parent = nullptr);
    /// Waits for the task that is running, which is told to stop.
    ~MessageReader() override;

    /// From here on messages are read with the extension's rules for their remote images. Asks for them on the reading
    /// thread; `failed` gets a sentence when they cannot be used, and there are none then.
    void useContentRules(std::shared_ptr<MEContentBlocker> blocker, std::function<void(std::string)> failed);
    /// Lists what all the arguments name, in their order; the first failure is the result of the whole.
    void list(std::vector<std::string> arguments, Listed done);
    void load(MessageLocation location, Loaded done);

private:
    std::stop_source m_stop;
    ContentRules m_rules; // The reading thread's.
    WorkQueue m_queue;    // Last: its work uses the members above.
};

} // namespace quillmate
