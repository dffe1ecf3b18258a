#include "localservice/model/ModelFailure.h"

#include "localservice/model/Completion.h"

namespace quillmate::localservice
{

namespace
{

constexpr int badGateway = 502;
constexpr int unavailable = 503;
constexpr int gatewayTimeout = 504;
constexpr int tooMany = 429;

std::string when(int seconds, const char* otherwise)
{
    return "try again " + (seconds > 0 ? "in " + std::to_string(seconds) + " seconds." : std::string(otherwise) + ".");
}

EngineFailure proxyFailure()
{
    return {badGateway, "The proxy on the way to the language model's server does not let the request through: check "
                        "https_proxy and http_proxy, or name the server in no_proxy."};
}

EngineFailure creditFailure()
{
    return {badGateway, "The language model's server says that there is no credit left: top up the account of the key "
                        "in QUILLMATE_OPENAI_API_KEY."};
}

EngineFailure failureOfStatus(const ModelResponse& response, bool hasKey)
{
    const std::string status = "(status " + std::to_string(response.status) + ")";
    switch (response.status) {
    case 401:
    case 403:
        if (!hasKey) {
            return {badGateway, "The language model's server asks for a key: set QUILLMATE_OPENAI_API_KEY and restart "
                                "the service."};
        }
        return {badGateway,
                "The language model's server refuses the key: set QUILLMATE_OPENAI_API_KEY to one that is good for "
                "this model and restart the service."};
    case 402:
        return creditFailure();
    case 404:
    case 405:
        return {badGateway, "The language model's server does not know this address or this model: check --openai-url "
                            "and --openai-model."};
    case 407:
        return proxyFailure();
    case 408:
        return {gatewayTimeout, "The language model's server gave up on the request: try again."};
    case 413:
        return {badGateway,
                "The message is too long for the language model's server: give a smaller --openai-context."};
    case 429:
        if (saysCreditIsUsedUp(response.body)) {
            return creditFailure();
        }
        return {tooMany,
                "The language model's server takes no more requests for now: " +
                    when(response.retryAfterSeconds, "in a while"),
                response.retryAfterSeconds};
    case 503:
        return {unavailable,
                "The language model's server is not ready; it may still be loading the model: " +
                    when(response.retryAfterSeconds, "in a minute"),
                response.retryAfterSeconds};
    case 504:
        return {gatewayTimeout,
                "The language model took too long behind its server: try again, or use a faster model."};
    default:
        break;
    }
    if (response.status >= 500) {
        return {badGateway, "The language model's server failed " + status + ": its own log says why."};
    }
    if (response.status >= 300 && response.status < 400) {
        return {badGateway,
                "The language model's server is at another address " + status + ": give that one with --openai-url."};
    }
    return {badGateway, "The language model's server does not take the request " + status +
                            ": check --openai-model, and that the server is OpenAI-compatible."};
}

} // namespace

std::optional<EngineFailure> failureOf(const ModelResponse& response, bool hasKey)
{
    switch (response.problem) {
    case ModelResponse::Problem::None:
        break;
    case ModelResponse::Problem::Unreachable:
        return EngineFailure{badGateway,
                             "The language model's server cannot be reached: start it, or check --openai-url."};
    case ModelResponse::Problem::NoConnection:
        return EngineFailure{gatewayTimeout, "The language model's server does not accept a connection: check that it "
                                             "runs and that --openai-url names it."};
    case ModelResponse::Problem::Slow:
        return EngineFailure{gatewayTimeout, "The language model took too long to answer: try again, use a faster "
                                             "model, or have it read less with --openai-context."};
    case ModelResponse::Problem::Untrusted:
        return EngineFailure{badGateway, "No trusted connection to the language model's server: it needs a certificate "
                                         "that this machine trusts, or check --openai-url."};
    case ModelResponse::Problem::Proxy:
        return proxyFailure();
    case ModelResponse::Problem::Broken:
        return EngineFailure{badGateway, "The language model's server broke its answer off or does not speak HTTP: "
                                         "check --openai-url and the server's own log."};
    case ModelResponse::Problem::Ended:
        return EngineFailure{unavailable, "The service is ending: try again once it runs anew."};
    }
    if (response.status >= 200 && response.status <= 299) {
        return std::nullopt;
    }
    return failureOfStatus(response, hasKey);
}

} // namespace quillmate::localservice
