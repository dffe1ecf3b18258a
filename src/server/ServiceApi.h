#pragma once

#include "base/Result.h"
#include "server/UpdateOffer.h"
#include "server/engine/Engine.h"
#include "server/http/HttpServer.h"
#include "server/signin/LoginPages.h"
#include "server/signin/SignInSessions.h"
#include "server/store/ServiceStore.h"

#include <functional>
#include <map>
#include <string>

namespace quillmate::server
{

/// Every path of the service: which methods it takes, how large a body, whether a bearer token is needed, and its
/// answer.
class ServiceApi : public RequestHandler
{
public:
    static constexpr std::size_t bodyLimit = std::size_t(64) * 1024 * 1024;

    /// All must outlive the API.
    ServiceApi(ServiceStore& store, const Engine& engine, UpdateOffer update);

    /// Where sign-in pages are: this origin, or that of the request's own Host header when it is empty.
    void setLoginOrigin(std::string origin) { m_loginOrigin = std::move(origin); }
    /// They are on this port of 127.0.0.1.
    void setLoginPort(unsigned port);

    [[nodiscard]] Admission admit(const HttpRequest& head) const override;
    [[nodiscard]] HttpResponse refusal(const HttpRequest& head, const HttpResponse& failure) const override;
    HttpResponse handle(const HttpRequest& request) override;

private:
    using Fields = std::map<std::string, std::string, std::less<>>;
    using Answer = Result<HttpResponse, StoreFailure>;
    struct Route {
        bool post = false;
        std::function<Answer(const User&, const Fields&)> answer;
        std::vector<std::string> keys;
    };

    /// The texts under the keys, or what is wrong with the body.
    static Result<Fields, std::string> readFields(const std::string& body, const std::vector<std::string>& keys);
    void addRoutes();
    [[nodiscard]] Answer answer(const HttpRequest& request);
    [[nodiscard]] Answer authorized(const HttpRequest& request, const Route& route);
    [[nodiscard]] HttpResponse beginSession(const HttpRequest& request);
    [[nodiscard]] HttpResponse session(const HttpRequest& request, const std::string& id);
    [[nodiscard]] std::string loginUrl(const HttpRequest& request, const std::string& id) const;
    [[nodiscard]] Answer startChat(const User& user, const Fields& fields);
    [[nodiscard]] Answer sendChat(const User& user, const Fields& fields);

    ServiceStore& m_store;
    const Engine& m_engine;
    UpdateOffer m_update;
    SignInSessions m_sessions;
    LoginPages m_pages;
    std::string m_loginOrigin;
    std::map<std::string, Route, std::less<>> m_routes;
};

} // namespace quillmate::server
