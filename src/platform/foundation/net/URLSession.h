#pragma once

#include "platform/foundation/net/NetworkEnvironment.h"
#include "platform/foundation/net/NetworkLimits.h"
#include "platform/foundation/net/URLRequest.h"

#include <functional>
#include <memory>

namespace quillmate
{

class URLSessionThread;

/// One transfer, made but not begun. It may be dropped once resumed: the transfer goes on.
class URLSessionDataTask
{
public:
    URLSessionDataTask(URLRequest request, DataTaskCompletion completion)
        : m_request(std::move(request))
        , m_completion(std::move(completion))
    {
    }

    /// Begins the transfer; a second call does nothing. Any thread; returns at once.
    void resume();

private:
    URLRequest m_request;
    DataTaskCompletion m_completion;
    bool m_resumed = false;
};

/// HTTP and HTTPS transfers on a thread of their own, which also runs the completions, one at a time per task.
/// HTTP/1.1 alone: HTTP/2 of Qt 6.4 stalls uploads and takes half a body for a whole one. Each has a
/// connection of its own; redirects are followed, never from https to http, and neither a bearer token nor a body
/// follows to another origin; TLS is always verified. A request is sent again, at most twice, when its connection broke
/// before anything of it had left, and never otherwise. Needs the application object; what is under way when that goes
/// ends without a completion.
class URLSession
{
public:
    static URLSession& shared();

    /// How connections are made from here on; without a call the network is the system's alone. Transfers that wait
    /// for it begin. The limits are those of the first call before the first transfer.
    static void configure(NetworkEnvironment environment, NetworkLimits limits = {});
    /// How connections are made is not known yet, or no longer: transfers wait until `configure` or `refuse`. `needed`
    /// runs on the main thread when the first of them does.
    static void configureWhenNeeded(std::function<void()> needed);
    /// The transfers that wait fail, with the sentence; the next one asks `needed` again.
    static void refuse(const std::string& sentence);

    /// Any thread.
    [[nodiscard]] std::shared_ptr<URLSessionDataTask> dataTask(URLRequest request, DataTaskCompletion completion);
    /// Runs the work on the session's thread, as a completion; what a long body costs to prepare belongs there. Any
    /// thread.
    void perform(std::function<void()> work);

private:
    URLSession() = default;
};

} // namespace quillmate
