#pragma once

#include "hosts/preview/mail/MessageStore.h"
#include "platform/foundation/WorkQueue.h"
#include "platform/mailkit/MEHandlers.h"

#include <QObject>
#include <functional>
#include <memory>
#include <stop_token>
#include <vector>

namespace quillmate
{

/// Asks the extension what to do with the listed messages, on a thread of this object's own. Main thread only.
///
/// The list knows the beginning of a message, so the extension is asked without its source, as a host may. That also
/// keeps the questions apart from the compose windows: the extension keeps the text of a message that it is shown whole
/// in the one place where an open panel looks for the message being answered.
class MessageDecisions : public QObject
{
    Q_OBJECT

public:
    /// The background of each message by the platform's number, 0 for none, in the order of the list.
    using Decided = std::function<void(std::vector<int>)>;

    explicit MessageDecisions(std::shared_ptr<MEMessageActionHandler> handler, QObject* parent = nullptr);
    /// Waits for the question that is being answered; the rest is not asked.
    ~MessageDecisions() override;

    /// `entries` hold a list. `done` runs on the main thread unless this object has gone by then.
    void ask(std::shared_ptr<const MessageEntries> entries, Decided done);
    /// Whether every list asked about has been decided on.
    [[nodiscard]] bool isSettled() const { return m_open == 0; }

private:
    std::shared_ptr<MEMessageActionHandler> m_handler;
    std::stop_source m_stop;
    int m_open = 0;
    WorkQueue m_queue; // Last: it ends before what its work leads to.
};

} // namespace quillmate
