#pragma once

#include "base/SharedText.h"
#include "service/ReplyReader.h"
#include "service/RequestBuilder.h"

#include <optional>
#include <string>

namespace quillmate
{

// The wire: for each request to the service a builder, which prepares it from what it is to carry, and a reader, which
// makes a record of its reply. They send, print and keep nothing. Any thread.

/// Who the user is.
struct UserDetails {
    std::string email;
    std::string name;
    /// The service has said all the same that the token is none of its own.
    bool isRefused = false;
    bool operator==(const UserDetails&) const = default;
};
[[nodiscard]] BuiltRequest buildUserDetailsRequest(const std::string& url, std::string_view accessToken);
/// Whatever the status is; a failure at any stage tells it.
[[nodiscard]] Reading<UserDetails> readUserDetails(const ServiceReply& reply);

/// The version that the service offers and where it can be downloaded, each absent when the reply has none.
struct LatestVersion {
    std::optional<std::string> version;
    std::optional<std::string> downloadURL;
    bool operator==(const LatestVersion&) const = default;
};
/// A query that the URL has already is replaced.
[[nodiscard]] BuiltRequest buildVersionRequest(const std::string& url, std::string_view currentVersion);
[[nodiscard]] Reading<LatestVersion> readLatestVersion(const ServiceReply& reply);

struct SummarizeRequestBody {
    /// Text of the replied-to message, or what the user pasted in its place.
    SharedText content;
    /// The signed-in user's address, here and in the other bodies.
    std::string email;
};
[[nodiscard]] BuiltRequest buildRequest(const URL& url, std::string_view accessToken, const SummarizeRequestBody& body);
[[nodiscard]] Reading<std::string> readSummary(const ServiceReply& reply);

struct GenerateResponseBody {
    /// Id of the replied-to message, empty when unknown.
    std::string messageId;
    SharedText content;
    std::string email;
};
[[nodiscard]] BuiltRequest buildRequest(const URL& url, std::string_view accessToken, const GenerateResponseBody& body);
/// A failure's text is for the user; nothing is printed.
[[nodiscard]] Reading<std::string> readGenerated(const ServiceReply& reply);

struct TrainingDataBody {
    std::string email;
    /// Text of the replied-to message, empty when unknown.
    SharedText question;
    /// The reply that is shown.
    std::string answer;

    [[nodiscard]] BodyMembers members() const;
};
[[nodiscard]] BuiltRequest buildRequest(const URL& url, std::string_view accessToken, const TrainingDataBody& body);
[[nodiscard]] Reading<std::string> readTraining(const ServiceReply& reply);

struct ChatStartBody {
    std::string email;
    /// Text of the replied-to message; goes last on the wire.
    SharedText emailContent;

    [[nodiscard]] BodyMembers members() const;
};
/// A conversation that the service has opened.
struct ChatStartResponse {
    std::string assistantId;
    std::string threadId;
    bool operator==(const ChatStartResponse&) const = default;
};
[[nodiscard]] BuiltRequest buildRequest(const URL& url, std::string_view accessToken, const ChatStartBody& body);
[[nodiscard]] Reading<ChatStartResponse> readChatStart(const ServiceReply& reply);

struct ChatBody {
    std::string assistantId;
    std::string threadId;
    std::string email;
    /// The newest message that the user sent.
    std::string content;
};
[[nodiscard]] BuiltRequest buildRequest(const URL& url, std::string_view accessToken, const ChatBody& body);
[[nodiscard]] Reading<std::string> readChatAnswer(const ServiceReply& reply);

/// What the service says of a sign-in session.
struct SessionResponse {
    std::string id;
    /// Present once the user has signed in in the browser.
    std::optional<std::string> accessToken;
    std::optional<std::string> refreshToken;
    /// The page on which the user signs in.
    std::optional<std::string> loginURL;
    bool operator==(const SessionResponse&) const = default;
};
/// For a new session and for the polls alike: no header, no body.
[[nodiscard]] BuiltRequest buildSessionRequest(const std::string& url);
/// The reply to the request for a new session: an object with a string "id" and, each a string, null or missing,
/// "access_token", "refresh_token" and "login_url".
[[nodiscard]] Reading<SessionResponse> readSession(const ServiceReply& reply);
/// The reply to a poll, which is of the same form; an empty one is none.
[[nodiscard]] Reading<SessionResponse> readPoll(const ServiceReply& reply);

} // namespace quillmate
