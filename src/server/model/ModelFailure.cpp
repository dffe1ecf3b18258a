#include "server/model/ModelFailure.h"

#include "server/model/Completion.h"

namespace quillmate::server
{

namespace
{

constexpr int unavailable = 503;
constexpr int gatewayTimeout = 504;
constexpr int tooMany = 429;

std::string when(int seconds, const char* otherwise)
{
    return "try again " + (seconds > 0 ? "in " + std::to_string(seconds) + " seconds." : std::string(otherwise) + ".");
}

EngineFailure creditFailure()
{
    return {badGateway, "The language model's server says that there is no credit left: top up the account of the key "
                        "in QUILLMATE_OPENAI_API_KEY."};
}

/// Of a status that has no sentence of its own.
EngineFailure failureOfClass(int status)
{
    const std::string server = "The language model's server ";
    const std::string told = "(status " + std::to_string(status) + ")";
    if (status >= 500) {
        return {badGateway, server + "failed " + told + ": its own log says why."};
    }
    if (status >= 300 && status < 400) {
        return {badGateway, server + "is at another address " + told + ": give that one with --openai-url."};
    }
    return {badGateway, server + "does not take the request " + told +
                            ": check --openai-model, and that the server is OpenAI-compatible."};
}

} // namespace

EngineFailure failureOf(ModelProblem problem)
{
    switch (problem) {
    case ModelProblem::Unreachable:
        return {badGateway, "The language model's server cannot be reached: start it, or check --openai-url."};
    case ModelProblem::NoConnection:
        return {gatewayTimeout, "The language model's server does not accept a connection: check that it runs and that "
                                "--openai-url names it."};
    case ModelProblem::Slow:
        return {gatewayTimeout, "The language model took too long to answer: try again, use a faster model, or have it "
                                "read less with --openai-context."};
    case ModelProblem::Untrusted:
        return {badGateway, "No trusted connection to the language model's server: it needs a certificate that this "
                            "machine trusts, or check --openai-url."};
    case ModelProblem::Proxy:
        return {badGateway, "The proxy on the way to the language model's server does not let the request through: "
                            "check https_proxy and http_proxy, or name the server in no_proxy."};
    case ModelProblem::Broken:
        return {badGateway, "The language model's server broke its answer off or does not speak HTTP: check "
                            "--openai-url and the server's own log."};
    case ModelProblem::Ended:
        break;
    }
    return {unavailable, "The service is ending: try again once it runs anew."};
}

EngineFailure failureOf(const ModelResponse& response, bool hasKey)
{
    const int seconds = response.retryAfterSeconds;
    switch (response.status) {
    case 401:
    case 403:
        return {
            badGateway,
            hasKey
                ? "The language model's server refuses the key: set QUILLMATE_OPENAI_API_KEY to one that is good for "
                  "this model and restart the service."
                : "The language model's server asks for a key: set QUILLMATE_OPENAI_API_KEY and restart the service."};
    case 402:
        return creditFailure();
    case 404:
    case 405:
        return {badGateway, "The language model's server does not know this address or this model: check --openai-url "
                            "and --openai-model."};
    case 407:
        return failureOf(ModelProblem::Proxy);
    case 408:
        return {gatewayTimeout, "The language model's server gave up on the request: try again."};
    case 413:
        return {badGateway,
                "The message is too long for the language model's server: give a smaller --openai-context."};
    case 429:
        if (saysCreditIsUsedUp(response.body)) {
            return creditFailure();
        }
        return {tooMany, "The language model's server takes no more requests for now: " + when(seconds, "in a while"),
                seconds};
    case 503:
        return {unavailable,
                "The language model's server is not ready; it may still be loading the model: " +
                    when(seconds, "in a minute"),
                seconds};
    case 504:
        return {gatewayTimeout,
                "The language model took too long behind its server: try again, or use a faster model."};
    default:
        return failureOfClass(response.status);
    }
}

} // namespace quillmate::server
