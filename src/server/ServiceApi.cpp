#include "server/ServiceApi.h"

#include "base/AsciiText.h"
#include "base/JSON.h"
#include "base/TerminalText.h"

#include <nlohmann/json.hpp>

#include <QtGlobal>

#include <unistd.h>

namespace quillmate::server
{

namespace
{

using Json = nlohmann::ordered_json;

constexpr std::string_view sessionPath = "/plugin-auth/session-request/";
constexpr std::string_view assistantId = "builtin";
/// What the panel sends for the text of a message when there is none.
constexpr std::string_view noMessage = "Compose session";

bool isVersionPath(std::string_view path)
{
    return path == "/api/v1/apple-version" || path == "/apple-version";
}

HttpResponse json(const Json& object, int status = 200)
{
    return jsonResponse(status, object.dump(-1, ' ', false, Json::error_handler_t::replace));
}

/// The token of "Authorization: Bearer …" (RFC 6750, 2.1); empty where there is none.
std::string_view bearerToken(const HttpRequest& request)
{
    constexpr std::string_view scheme = "bearer ";
    const std::string* value = request.header("authorization");
    const bool isBearer = value != nullptr && findAnyCase(*value, scheme) == 0;
    return isBearer ? std::string_view(*value).substr(scheme.size()) : std::string_view();
}

/// What an engine wrote, or its failure.
HttpResponse textReply(const EngineText& written)
{
    if (!written) {
        const EngineFailure& failure = written.error();
        HttpResponse response = errorResponse(failure.status, failure.sentence);
        if (failure.retryAfterSeconds > 0) {
            response.headers.emplace_back("Retry-After", std::to_string(failure.retryAfterSeconds));
        }
        return response;
    }
    return json({{"response", written.value()}});
}

HttpResponse storeFailed(const HttpRequest& request, const StoreFailure& failure)
{
    qCritical("quillmate-service: %s failed: %s", textFor(STDERR_FILENO, request.path).c_str(), failure.text.c_str());
    return errorResponse(500, "The service could not answer: its log says why.");
}

HttpResponse unauthorized()
{
    HttpResponse response = errorResponse(401, "The access token is missing or not valid: sign in again.");
    response.headers.emplace_back("WWW-Authenticate", "Bearer");
    return response;
}

} // namespace

ServiceApi::ServiceApi(ServiceStore& store, const Engine& engine, UpdateOffer update)
    : m_store(store)
    , m_engine(engine)
    , m_update(std::move(update))
    , m_pages(m_sessions, store)
{
    addRoutes();
}

void ServiceApi::setLoginPort(unsigned port)
{
    m_pages.setLoginPort(port);
    setLoginOrigin("http://127.0.0.1:" + std::to_string(port));
}

void ServiceApi::addRoutes()
{
    m_routes["/api/v1/me"] = {false,
                              [](const User& user, const Fields&) {
                                  return json({{"email", user.email}, {"name", user.name}});
                              },
                              {}};
    m_routes["/api/v1/summarize"] = {
        true,
        [this](const User&, const Fields& fields) {
            const std::string& mail = fields.at("content");
            return mail.empty() ? errorResponse(422, "There is nothing to summarize: send a text under \"content\".")
                                : textReply(m_engine.summarize(mail));
        },
        {"content", "email", "plugin_source", "plugin_version"}};
    m_routes["/api/v1/response"] = {true,
                                    [this](const User& user, const Fields& fields) {
                                        return textReply(m_engine.reply(fields.at("content"), user.name));
                                    },
                                    {"messageId", "content", "email", "plugin_source", "plugin_version"}};
    m_routes["/api/v1/create-training-data"] = {
        true,
        [this](const User& user, const Fields& fields) -> Answer {
            if (auto added = m_store.addTrainingData(user.id, fields.at("question"), fields.at("answer")); !added) {
                return Failure(added.error());
            }
            return json({{"success", "Thank you: the reply was stored as training data."}});
        },
        {"email", "question", "answer", "plugin_source", "plugin_version"}};
    m_routes["/api/v1/chat/start"] = {
        true,
        [this](const User& user, const Fields& fields) { return startChat(user, fields); },
        {"email", "plugin_source", "plugin_version", "email_content"}};
    m_routes["/api/v1/chat/send"] = {
        true,
        [this](const User& user, const Fields& fields) { return sendChat(user, fields); },
        {"assistantId", "threadId", "email", "content", "plugin_source", "plugin_version"}};
}

RequestHandler::Admission ServiceApi::admit(const HttpRequest& head) const
{
    const bool login = head.path.starts_with(LoginPages::path);
    const auto route = m_routes.find(head.path);
    const bool routed = route != m_routes.end();
    const bool known = login || routed || head.path.starts_with(sessionPath) || isVersionPath(head.path);
    if (!known || (head.listener == Listener::LoginPages && !login)) {
        return {errorResponse(404, "There is nothing at this address.")};
    }
    const bool takesPost = login || (routed && route->second.post);
    const bool takesGet = login || !takesPost;
    const std::size_t limit = login ? LoginPages::bodyLimit : takesPost ? bodyLimit : 0;
    if (!(takesGet && head.method == "GET") && !(takesPost && head.method == "POST")) {
        const std::string allowed = !takesPost ? "GET, HEAD" : takesGet ? "GET, HEAD, POST" : "POST";
        HttpResponse wrongMethod = errorResponse(405, "This address does not take that method: use " + allowed + ".");
        wrongMethod.headers.emplace_back("Allow", allowed);
        return {refusal(head, wrongMethod)};
    }
    const bool slow = routed && takesPost;
    // Before the body is read, so that nobody without a token fills the memory or has work done.
    if (slow) {
        const auto user = m_store.userByToken(bearerToken(head));
        if (!user) {
            return {storeFailed(head, user.error())};
        }
        if (!user.value()) {
            return {unauthorized()};
        }
    }
    return {std::nullopt, limit, slow};
}

HttpResponse ServiceApi::refusal(const HttpRequest& head, const HttpResponse& failure) const
{
    return head.path.starts_with(LoginPages::path) ? LoginPages::refusal(failure) : failure;
}

HttpResponse ServiceApi::handle(const HttpRequest& request)
{
    auto response = answer(request);
    return response ? std::move(response).value() : storeFailed(request, response.error());
}

ServiceApi::Answer ServiceApi::answer(const HttpRequest& request)
{
    if (request.path.starts_with(LoginPages::path)) {
        return m_pages.handle(request);
    }
    if (request.path == sessionPath) {
        return beginSession(request);
    }
    if (request.path.starts_with(sessionPath)) {
        return session(request, request.path.substr(sessionPath.size()));
    }
    if (isVersionPath(request.path)) {
        return jsonResponse(200, updateReply(m_update, request.queryValue("currentVersion")));
    }
    return authorized(request, m_routes.find(request.path)->second);
}

ServiceApi::Answer ServiceApi::authorized(const HttpRequest& request, const Route& route)
{
    const auto found = m_store.userByToken(bearerToken(request));
    if (!found) {
        return Failure(found.error());
    }
    const std::optional<User>& user = found.value();
    if (!user) {
        return unauthorized();
    }
    if (!route.post) {
        return route.answer(*user, {});
    }
    const auto fields = readFields(request.body, route.keys);
    return fields ? route.answer(*user, fields.value()) : Answer(errorResponse(400, fields.error()));
}

Result<ServiceApi::Fields, std::string> ServiceApi::readFields(const std::string& body,
                                                               const std::vector<std::string>& keys)
{
    const auto read = JSONSerialization::jsonObject(body, JSONSerialization::Fragments::Refused);
    if (!read || read.value().object() == nullptr) {
        return Failure(std::string("The body is not a JSON object: send one in UTF-8."));
    }
    Fields fields;
    for (const std::string& key : keys) {
        const std::string* text = read.value().stringMember(key);
        if (text == nullptr) {
            return Failure("The body has no text under \"" + key + "\": send it as a JSON string.");
        }
        fields.emplace(key, *text);
    }
    return fields;
}

HttpResponse ServiceApi::beginSession(const HttpRequest& request)
{
    const auto id = m_sessions.begin();
    if (!id) {
        return errorResponse(503, "Too many sign-ins are under way: try again in a few minutes.");
    }
    return json(
        {{"id", *id}, {"access_token", nullptr}, {"refresh_token", nullptr}, {"login_url", loginUrl(request, *id)}});
}

HttpResponse ServiceApi::session(const HttpRequest& request, const std::string& id)
{
    const auto state = m_sessions.fetch(id);
    if (!state) {
        return errorResponse(404, "This sign-in is over or was never begun: begin a new one.");
    }
    Json token = nullptr;
    if (state->accessToken) {
        token = *state->accessToken;
    }
    return json(
        {{"id", id}, {"access_token", token}, {"refresh_token", nullptr}, {"login_url", loginUrl(request, id)}});
}

std::string ServiceApi::loginUrl(const HttpRequest& request, const std::string& id) const
{
    const std::string* host = request.header("host");
    const std::string origin = m_loginOrigin.empty() && host != nullptr ? "https://" + *host : m_loginOrigin;
    return origin + std::string(LoginPages::path) + SignInSessions::pageOf(id);
}

ServiceApi::Answer ServiceApi::startChat(const User& user, const Fields& fields)
{
    // What is kept is the readable text, not the source with its attachments.
    const std::string& mail = fields.at("email_content");
    const std::string text = mail == noMessage ? std::string() : m_engine.readableText(mail);
    const auto thread = m_store.startThread(user.id, text);
    if (!thread) {
        return Failure(thread.error());
    }
    return json({{"response", {{"assistantId", assistantId}, {"threadId", thread.value()}}}});
}

ServiceApi::Answer ServiceApi::sendChat(const User& user, const Fields& fields)
{
    const std::string& id = fields.at("threadId");
    const auto found = m_store.thread(user.id, id);
    if (!found) {
        return Failure(found.error());
    }
    const std::optional<ChatThread>& thread = found.value();
    if (!thread || fields.at("assistantId") != assistantId) {
        return errorResponse(404, "There is no such chat: start a new one.");
    }
    const std::string& question = fields.at("content");
    const EngineText answer = m_engine.answer(thread->text, thread->messages, question);
    if (answer) {
        const auto added = m_store.addMessages(
            id, {{ThreadMessage::Role::User, question}, {ThreadMessage::Role::Assistant, answer.value()}});
        if (!added) {
            return Failure(added.error());
        }
    }
    return textReply(answer);
}

} // namespace quillmate::server
