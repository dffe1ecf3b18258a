#pragma once

#include "hosts/preview/mail/MessageStore.h"
#include "platform/foundation/schedule/WorkQueue.h"
#include "platform/mailkit/MEExtension.h"

#include <QObject>
#include <functional>
#include <memory>
#include <stop_token>

namespace quillmate
{

/// A message of the list, and what the extension decided on it.
struct ListedMessage {
    MessageEntry entry;
    int color = 0; ///< the background by the platform's number, 0 for none
};

/// Reads messages on a thread of its own, one task after the other, and hands the results over on the main thread.
/// Results that come after this object's end are dropped.
///
/// The list knows the beginning of a message, so the extension is asked about it without its source, as a host may.
/// That also keeps the questions apart from the compose windows: the extension keeps the text of a message that it is
/// shown whole in the one place where an open panel looks for the message being answered.
class MessageReader : public QObject
{
    Q_OBJECT

public:
    using Listing = Result<std::vector<ListedMessage>, std::string>;
    using Listed = std::function<void(const Listing&)>;
    using Loaded = std::function<void(std::shared_ptr<const Result<MailDocument, std::string>>)>;

    /// Messages are read with the extension's rules for their remote images; `refused` gets a sentence, on the reading
    /// thread, when they cannot be used, and there are none then.
    MessageReader(MEExtension& extension, std::function<void(const std::string&)> refused);
    /// Waits for the task that is running, which is told to stop.
    ~MessageReader() override;

    /// Lists what all the arguments name, in their order; the first failure is the result of the whole.
    void list(std::vector<std::string> arguments, Listed done);
    void load(MessageLocation location, Loaded done);

private:
    [[nodiscard]] Listing listAll(const std::vector<std::string>& arguments) const;

    const std::shared_ptr<MEMessageActionHandler> m_actions;
    std::stop_source m_stop;
    ContentRules m_rules; // The reading thread's.
    WorkQueue m_queue;    // Last: its work uses the members above.
};

} // namespace quillmate
