#include "hosts/preview/MessageReader.h"

#include "platform/foundation/DispatchQueue.h"

#include <QPointer>
#include <iterator>
#include <utility>

namespace quillmate
{
namespace
{

MessageEntries listAll(const std::vector<std::string>& arguments, const std::stop_token& stop)
{
    std::vector<MessageEntry> entries;
    for (const std::string& argument : arguments) {
        auto listed = listMessages(argument, stop);
        if (!listed) {
            return listed;
        }
        auto found = std::move(listed).value();
        std::move(found.begin(), found.end(), std::back_inserter(entries));
    }
    return entries;
}

/// Runs the work on the main thread if the reader is there by then.
void handOver(const QPointer<MessageReader>& reader, std::function<void()> work)
{
    DispatchQueue::main().async([reader, work = std::move(work)] {
        if (reader) {
            work();
        }
    });
}

} // namespace

MessageReader::MessageReader(QObject* parent)
    : QObject(parent)
{
}

MessageReader::~MessageReader()
{
    m_stop.request_stop();
}

void MessageReader::useContentRules(std::shared_ptr<MEContentBlocker> blocker, std::function<void(std::string)> failed)
{
    const QPointer<MessageReader> self(this);
    m_queue.async([this, self, blocker = std::move(blocker), failed = std::move(failed)] {
        auto rules = ContentRules::parse(blocker->contentRulesJSON());
        if (rules) {
            m_rules = std::move(rules).value();
        } else {
            handOver(self, [failed, sentence = rules.error()] { failed(sentence); });
        }
    });
}

void MessageReader::list(std::vector<std::string> arguments, Listed done)
{
    const QPointer<MessageReader> self(this);
    m_queue.async([self, arguments = std::move(arguments), done = std::move(done), stop = m_stop.get_token()] {
        auto result = std::make_shared<const MessageEntries>(listAll(arguments, stop));
        handOver(self, [done, result] { done(result); });
    });
}

void MessageReader::load(MessageLocation location, Loaded done)
{
    const QPointer<MessageReader> self(this);
    m_queue.async([this, self, location = std::move(location), done = std::move(done)] {
        auto result = std::make_shared<const Result<MailDocument, MailFailure>>(loadMessage(location, m_rules));
        handOver(self, [done, result] { done(result); });
    });
}

} // namespace quillmate
