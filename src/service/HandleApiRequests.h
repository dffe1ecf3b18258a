#pragma once

#include "base/Result.h"
#include "platform/foundation/net/URL.h"
#include "service/ApiError.h"
#include "service/ServiceRequests.h"
#include "state/SummarizedResponse.h"
#include "state/UserDetailsManager.h"

#include <functional>
#include <optional>
#include <string>

namespace quillmate
{

/// A generated reply, with the id of the message that it answers.
struct GeneratedResponse {
    std::string messageId;
    std::string response;
    bool operator==(const GeneratedResponse&) const = default;
};

/// The requests to the service. Every operation returns at once and reports later; none keeps state between calls. All
/// of them may be called on any thread.
class HandleApiRequests
{
public:
    using UserDetailsCompletion = std::function<void(UserDetailsManager&)>;
    using Failed = std::function<void()>;
    using SummaryCompletion = std::function<void(std::optional<SummarizedResponse>)>;
    using GenerateCompletion =
        std::function<void(std::optional<GeneratedResponse> record, std::optional<std::string> errorText)>;

    using TrainingCompletion = std::function<void(std::string successText)>;
    using ChatStartCompletion = std::function<void(Result<ChatStartResponse, ApiError>)>;
    using ChatMessageCompletion = std::function<void(Result<std::string, ApiError>)>;

    HandleApiRequests() = delete;

    /// Asks who the user is and stores the answer in `UserDetailsManager`, unless the token is given up meanwhile. One
    /// of the two functions runs once: the completion on the main thread, when the reply held both address and name,
    /// else `failed`, on any. When the service refuses the token of now, the sign-in ends.
    static void fetchUserDetails(
        const std::string& url, const std::string& accessToken, UserDetailsCompletion completion,
        Failed failed = [] {});

    /// Asks whether there is a version newer than `currentVersion`; reports through `IncommingUpdatesManager` alone.
    static void fetchLatestVersion(const std::string& url, const std::string& currentVersion);

    /// Asks for a summary of the content, after refreshing the user's details, whose address goes with it. Tries up to
    /// four times, 2.0 seconds apart; once the token is given up nothing more is sent. The completion runs exactly
    /// once, on the thread that decides the outcome, with nothing when there is no summary.
    static void sendSummarizeRequest(const URL& url, const std::string& accessToken, SharedText content,
                                     const std::string& messageId, SummaryCompletion completion);

    /// Asks for a reply, once. The completion runs exactly once, with either a record or a text that says what went
    /// wrong, on the network's thread.
    static void sendGenerateRequest(const URL& url, const std::string& accessToken, const GenerateResponseBody& body,
                                    const std::string& messageId, GenerateCompletion completion);

    /// Sends a reply as training data, once. One of the two functions runs once, on the network's thread: the
    /// completion when the service took it, else `failed`, after a line that says what went wrong.
    static void sendTrainingData(const URL& url, const std::string& accessToken, const TrainingDataBody& body,
                                 TrainingCompletion completion, Failed failed);

    // The chat's two requests, sent once. The completion runs at most once, on the network's thread, or for a message
    // that cannot be encoded before the call returns; never for a success that comes without a body.

    /// Opens a conversation about a message.
    static void sendChatStart(const URL& url, const std::string& accessToken, const ChatStartBody& body,
                              ChatStartCompletion completion);
    /// Sends a message into a conversation and brings the answer.
    static void sendChatMessage(const URL& url, const std::string& accessToken, const ChatBody& body,
                                ChatMessageCompletion completion);
};

} // namespace quillmate
