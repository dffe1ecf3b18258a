#include "hosts/preview/MessageReader.h"

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

} // namespace

MessageReader::MessageReader(QObject* parent)
    : QObject(parent)
{
    m_thread.setMaxThreadCount(1);
}

MessageReader::~MessageReader()
{
    m_stop.request_stop();
    m_thread.clear();
    m_thread.waitForDone();
}

void MessageReader::list(std::vector<std::string> arguments, Listed done)
{
    // `this` is alive in the task, since the destructor waits for it; the queued call goes with the object.
    m_thread.start([this, arguments = std::move(arguments), done = std::move(done), stop = m_stop.get_token()] {
        auto result = std::make_shared<const MessageEntries>(listAll(arguments, stop));
        QMetaObject::invokeMethod(
            this, [done, result] { done(result); }, Qt::QueuedConnection);
    });
}

void MessageReader::load(MessageLocation location, Loaded done)
{
    m_thread.start([this, location = std::move(location), done = std::move(done)] {
        auto result = std::make_shared<const Result<MailDocument, MailFailure>>(loadMessage(location));
        QMetaObject::invokeMethod(
            this, [done, result] { done(result); }, Qt::QueuedConnection);
    });
}

} // namespace quillmate
