#include "hosts/preview/MessageReader.h"

#include "platform/foundation/schedule/DispatchQueue.h"

#include <QPointer>
#include <utility>

namespace quillmate
{
namespace
{

int decidedColor(MEMessageActionHandler& handler, const MessageSummary& summary)
{
    const std::string& address = summary.sender.address;
    const MEMessage message{.rawData = std::nullopt,
                            .subject = summary.subject,
                            .fromAddress = {address.empty() ? std::nullopt : std::optional(address)},
                            .headers = std::nullopt};
    int color = 0;
    handler.decideActionForMessage(message, [&color](const auto& decision) {
        if (decision && decision->action.kind == MEMessageAction::Kind::SetBackgroundColor) {
            color = decision->action.color;
        }
    });
    return color;
}

/// Hands the result over on the main thread if the reader is there by then.
template<typename Done, typename Value>
void handOver(const QPointer<MessageReader>& reader, Done done, std::shared_ptr<const Value> result)
{
    DispatchQueue::main().async([reader, done = std::move(done), result = std::move(result)] {
        if (reader) {
            done(result);
        }
    });
}

} // namespace

MessageReader::MessageReader(MEExtension& extension, std::function<void(const std::string&)> refused)
    : m_actions(extension.handlerForMessageActions())
{
    m_queue.async([this, blocker = extension.handlerForContentBlocker(), refused = std::move(refused)] {
        auto rules = ContentRules::parse(blocker->contentRulesJSON());
        if (rules) {
            m_rules = std::move(rules).value();
        } else {
            refused(rules.error());
        }
    });
}

MessageReader::~MessageReader()
{
    m_stop.request_stop();
}

MessageReader::Listing MessageReader::listAll(const std::vector<std::string>& arguments) const
{
    const std::stop_token stop = m_stop.get_token();
    std::vector<ListedMessage> messages;
    for (const std::string& argument : arguments) {
        auto entries = listMessages(argument, stop);
        if (!entries) {
            return Failure(entries.error());
        }
        for (MessageEntry& entry : std::move(entries).value()) {
            if (stop.stop_requested()) {
                return messages; // Nobody will look at it.
            }
            const int color = decidedColor(*m_actions, entry.summary);
            messages.push_back({std::move(entry), color});
        }
    }
    return messages;
}

void MessageReader::list(std::vector<std::string> arguments, Listed done)
{
    const QPointer<MessageReader> self(this);
    m_queue.async([this, self, arguments = std::move(arguments), done = std::move(done)] {
        handOver(
            self, [done](const auto& listing) { done(*listing); }, std::make_shared<const Listing>(listAll(arguments)));
    });
}

void MessageReader::load(MessageLocation location, Loaded done)
{
    const QPointer<MessageReader> self(this);
    m_queue.async([this, self, location = std::move(location), done = std::move(done)] {
        handOver(self, done, std::make_shared<const Result<MailDocument, std::string>>(loadMessage(location, m_rules)));
    });
}

} // namespace quillmate
