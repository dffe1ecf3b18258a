#include "server/signin/LoginPages.h"

#include "server/signin/LoginForm.h"
#include "server/signin/LoginMarkup.h"
#include "server/signin/SignInSessions.h"
#include "server/store/ServiceStore.h"

#include <algorithm>

namespace quillmate::server
{

namespace
{

HttpResponse htmlResponse(int status, std::string html)
{
    // "no-referrer" would make browsers send "Origin: null" with the form (Fetch, "serialize a request origin"), and
    // the origin could not be checked; "same-origin" tells other sites just as little.
    return {status,
            {{"Content-Type", "text/html; charset=utf-8"},
             {"Content-Security-Policy", pageSecurityPolicy()},
             {"X-Content-Type-Options", "nosniff"},
             {"X-Frame-Options", "DENY"},
             {"Referrer-Policy", "same-origin"},
             {"Cross-Origin-Opener-Policy", "same-origin"},
             {"Cross-Origin-Resource-Policy", "same-origin"},
             {"Cache-Control", "no-store"}},
            std::move(html)};
}

HttpResponse overPage()
{
    return htmlResponse(404, noticePage("This sign-in is over",
                                        "Go back to your mail and press “Login” there again to get a new page."));
}

HttpResponse signedInPage()
{
    return htmlResponse(
        200, noticePage("Signed in", "You are signed in. You can close this page and go back to your mail."));
}

HttpResponse refusedPage()
{
    return htmlResponse(403, noticePage("Not signed in",
                                        "This form did not come from the sign-in page itself. Go back to your mail and "
                                        "press “Login” there again."));
}

// The prefix ties it to this host and to Secure (RFC 6265bis, 4.1.3.2); a loopback address counts as secure.
constexpr std::string_view browserCookie = "__Host-quillmate-browser";

/// The value of the browser's cookie (RFC 6265, 4.2.1); empty where there is none.
std::string browserOf(const HttpRequest& request)
{
    const std::string* header = request.header("cookie");
    std::string_view rest = header == nullptr ? std::string_view() : std::string_view(*header);
    while (!rest.empty()) {
        std::string_view pair = rest.substr(0, rest.find(';'));
        rest.remove_prefix(std::min(rest.size(), pair.size() + 1));
        pair.remove_prefix(std::min(pair.size(), pair.find_first_not_of(' ')));
        const std::size_t equals = pair.find('=');
        if (equals != std::string_view::npos && pair.substr(0, equals) == browserCookie) {
            return std::string(pair.substr(equals + 1));
        }
    }
    return {};
}

std::string cookieOf(const std::string& browser)
{
    const auto seconds = std::chrono::seconds(ServiceStore::browserLife).count();
    return std::string(browserCookie) + '=' + browser + "; Path=/; Max-Age=" + std::to_string(seconds) +
           "; Secure; HttpOnly; SameSite=Strict";
}

bool comesFromOwnPage(const HttpRequest& request)
{
    const std::string* host = request.header("host");
    const std::string* origin = request.header("origin");
    const std::string* site = request.header("sec-fetch-site");
    const std::string scheme = request.listener == Listener::Service ? "https://" : "http://";
    const bool ownOrigin = origin == nullptr || (host != nullptr && *origin == scheme + *host);
    return ownOrigin && (site == nullptr || *site == "same-origin");
}

} // namespace

HttpResponse LoginPages::refusal(const HttpResponse& failure)
{
    const char* sentence = failure.status == 405 ? "This page only takes its own form."
                           : failure.status == 413
                               ? "The form is longer than it can be: enter a shorter name or address."
                           : failure.status == 503 ? "The service has too much to do: wait a moment."
                                                   : "The browser's request could not be understood.";
    HttpResponse response =
        htmlResponse(failure.status, noticePage("Not signed in", std::string(sentence) + " Go back to your mail and "
                                                                                         "press “Login” there again."));
    for (const auto& header : failure.headers) {
        if (header.first == "Allow") {
            response.headers.push_back(header);
        }
    }
    return response;
}

Result<HttpResponse, StoreFailure> LoginPages::handle(const HttpRequest& request) const
{
    // Over TLS the certificate has already tied the connection to a name of this service.
    const std::string* host = request.header("host");
    if (request.listener != Listener::Service && (host == nullptr || *host != m_loginHost)) {
        return htmlResponse(421, noticePage("Wrong address", "This page is not served under that name. Go back to your "
                                                             "mail and press “Login” there again."));
    }
    const std::string page = request.path.substr(path.size());
    if (request.method == "POST") {
        return submit(request, page);
    }
    const auto state = m_sessions.state(page);
    if (!state) {
        return overPage();
    }
    return state->accessToken ? signedInPage() : openPage(request, state->formToken);
}

Result<HttpResponse, StoreFailure> LoginPages::openPage(const HttpRequest& request, const std::string& formToken) const
{
    const auto found = m_store.userByBrowser(request.query == someoneElse ? std::string() : browserOf(request));
    if (!found) {
        return Failure(found.error());
    }
    const std::optional<User>& user = found.value();
    return htmlResponse(200, user ? continuePage(user->name, user->email, request.path, formToken)
                                  : loginFormPage({}, request.path, formToken));
}

Result<HttpResponse, StoreFailure> LoginPages::submit(const HttpRequest& request, const std::string& page) const
{
    const std::string* type = request.header("content-type");
    if (type == nullptr || !type->starts_with("application/x-www-form-urlencoded")) {
        return htmlResponse(415, noticePage("Not signed in", "Please use the form of the sign-in page."));
    }
    if (!comesFromOwnPage(request)) {
        return refusedPage();
    }
    const auto state = m_sessions.state(page);
    if (!state) {
        return overPage();
    }
    const LoginForm form = readLoginForm(request.body);
    if (!state->accessToken && !form.isValid()) {
        return htmlResponse(422, loginFormPage(form, request.path, state->formToken));
    }
    std::string browser;
    const auto outcome = m_sessions.complete(page, form.formToken, [&]() -> Result<std::string, StoreFailure> {
        const auto signedIn = m_store.signIn(form.email, form.name, browserOf(request));
        if (!signedIn) {
            return Failure(signedIn.error());
        }
        browser = signedIn.value().browser;
        return signedIn.value().token;
    });
    if (!outcome) {
        return Failure(outcome.error());
    }
    switch (outcome.value()) {
    case SignInSessions::Outcome::WrongFormToken:
        return refusedPage();
    case SignInSessions::Outcome::Unknown:
        return overPage();
    case SignInSessions::Outcome::SignedIn:
    case SignInSessions::Outcome::AlreadySignedIn:
        break;
    }
    // The result is fetched anew, so that reloading it sends no form again (RFC 9110, 15.4.4).
    HttpResponse response = signedInPage();
    response.status = 303;
    response.headers.emplace_back("Location", request.path);
    if (!browser.empty()) {
        response.headers.emplace_back("Set-Cookie", cookieOf(browser));
    }
    return response;
}

} // namespace quillmate::server
