#include "platform/foundation/net/URLSession.h"

#include "platform/foundation/net/URLCache.h"
#include "platform/foundation/net/URLSessionThread.h"

#include <utility>

namespace quillmate
{

URLSession& URLSession::shared()
{
    static URLSession session;
    return session;
}

void URLSession::configure(NetworkEnvironment environment, NetworkLimits limits)
{
    URLSessionThread::configure(std::move(environment), std::move(limits));
}

void URLSession::configureWhenNeeded(std::function<void()> needed)
{
    URLSessionThread::configureWhenNeeded(std::move(needed));
}

void URLSession::refuse(const std::string& sentence)
{
    URLSessionThread::refuse(sentence);
}

std::shared_ptr<URLSessionDataTask> URLSession::dataTask(URLRequest request, DataTaskCompletion completion)
{
    return std::make_shared<URLSessionDataTask>(std::move(request), std::move(completion));
}

void URLSession::perform(std::function<void()> work)
{
    URLSessionThread::shared().perform(std::move(work));
}

void URLSessionDataTask::resume()
{
    if (!std::exchange(m_resumed, true)) {
        URLSessionThread::shared().send(std::move(m_request), std::move(m_completion));
    }
}

URLCache& URLCache::shared()
{
    static URLCache cache;
    return cache;
}

void URLCache::removeAllCachedResponses()
{
    URLSessionThread::shared().clearCache();
}

} // namespace quillmate
