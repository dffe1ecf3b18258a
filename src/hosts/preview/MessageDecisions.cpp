#include "hosts/preview/MessageDecisions.h"

#include "platform/foundation/DispatchQueue.h"

#include <QPointer>
#include <utility>

namespace quillmate
{
namespace
{

MEMessage messageOf(const MessageSummary& summary)
{
    const std::string& address = summary.sender.address;
    return {.rawData = std::nullopt,
            .subject = summary.subject,
            .fromAddress = {address.empty() ? std::nullopt : std::optional(address)},
            .headers = std::nullopt};
}

int colorFor(MEMessageActionHandler& handler, const MessageSummary& summary)
{
    int color = 0;
    handler.decideActionForMessage(messageOf(summary), [&color](const auto& decision) {
        if (decision && decision->action.kind == MEMessageAction::Kind::SetBackgroundColor) {
            color = decision->action.color;
        }
    });
    return color;
}

} // namespace

MessageDecisions::MessageDecisions(std::shared_ptr<MEMessageActionHandler> handler, QObject* parent)
    : QObject(parent)
    , m_handler(std::move(handler))
{
}

MessageDecisions::~MessageDecisions()
{
    m_stop.request_stop();
}

void MessageDecisions::ask(std::shared_ptr<const MessageEntries> entries, Decided done)
{
    ++m_open;
    const QPointer<MessageDecisions> self(this);
    m_queue.async(
        [self, handler = m_handler, stop = m_stop.get_token(), entries = std::move(entries), done = std::move(done)] {
            std::vector<int> colors;
            colors.reserve(entries->value().size());
            for (const MessageEntry& entry : entries->value()) {
                if (stop.stop_requested()) {
                    return;
                }
                colors.push_back(colorFor(*handler, entry.summary));
            }
            DispatchQueue::main().async([self, done, colors = std::move(colors)] {
                if (self) {
                    --self->m_open;
                    done(colors);
                }
            });
        });
}

} // namespace quillmate
