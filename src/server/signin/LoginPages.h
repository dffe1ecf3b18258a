#pragma once

#include "base/Result.h"
#include "server/http/HttpMessage.h"

#include <string>
#include <string_view>

namespace quillmate::server
{

class ServiceStore;
class SignInSessions;
struct StoreFailure;

/// The page on which a person signs in with an ordinary browser. A form is taken only from the page itself: it must
/// carry the session's one-time token, and what the browser says of its origin (Origin, Sec-Fetch-Site, Host) must fit.
/// A browser is remembered by a cookie, so that whoever signed in with it last is offered to go on without typing. The
/// cookie fills the form in and proves nothing: the sign-in asks nobody for a proof. Any thread.
class LoginPages
{
public:
    static constexpr std::string_view path = "/plugin-auth/login/";
    static constexpr std::size_t bodyLimit = std::size_t(16) * 1024;

    LoginPages(SignInSessions& sessions, ServiceStore& store)
        : m_sessions(sessions)
        , m_store(store)
    {
    }

    /// The port of the plain listener: there, requests must name exactly 127.0.0.1 and this port as their host, so that
    /// a foreign name that was made to point here (DNS rebinding) gets nothing. Set before the first request.
    void setLoginPort(unsigned port) { m_loginHost = "127.0.0.1:" + std::to_string(port); }

    /// A refusal with its status as a page instead of JSON.
    [[nodiscard]] static HttpResponse refusal(const HttpResponse& failure);
    /// Answers a request whose path begins with `path`.
    [[nodiscard]] Result<HttpResponse, StoreFailure> handle(const HttpRequest& request) const;

private:
    /// The page of a session that nobody has signed in to yet.
    [[nodiscard]] Result<HttpResponse, StoreFailure> openPage(const HttpRequest& request,
                                                              const std::string& formToken) const;
    [[nodiscard]] Result<HttpResponse, StoreFailure> submit(const HttpRequest& request, const std::string& page) const;

    SignInSessions& m_sessions;
    ServiceStore& m_store;
    std::string m_loginHost;
};

} // namespace quillmate::server
