#pragma once

#include "base/Result.h"
#include "platform/foundation/net/URLRequest.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quillmate
{

/// A prepared request, or the text that says why there is none.
using BuiltRequest = Result<URLRequest, std::string>;

/// The members of a body in the order of the wire, all texts. They look into the record that they were taken from.
using BodyMembers = std::vector<std::pair<std::string_view, std::string_view>>;

// What the plugin says of itself in every body.
constexpr auto pluginSource = "plugin_apple";
/// The wire format's own version, not the extension's.
constexpr auto pluginVersion = "v1.0.0";

/// A GET request; the token goes into its one header.
[[nodiscard]] URLRequest makeGetRequest(const URL& url, std::string_view accessToken);

/// Whether a POST says which replies it takes; the summary and reply-generation requests do.
enum class AcceptHeader { Omitted, Sent };

/// A POST request of a JSON object. Fails on a text that is not UTF-8.
[[nodiscard]] BuiltRequest makePostRequest(const URL& url, std::string_view accessToken, AcceptHeader accept,
                                           const BodyMembers& members);

/// Every member's name and value on one line, for a diagnostic: what goes on the wire; for texts that cannot go there,
/// the same with only their printable ASCII.
[[nodiscard]] std::string describe(const BuiltRequest& request, const BodyMembers& members);

} // namespace quillmate
