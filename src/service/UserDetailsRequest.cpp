#include "platform/foundation/schedule/DispatchQueue.h"
#include "service/HandleApiRequests.h"
#include "service/RequestSender.h"

namespace quillmate
{
namespace
{

constexpr ReplyTable userDetailsTable{.method = ReplyTable::Method::Get,
                                      .transport = "Error: ",
                                      .body = "No data received",
                                      .parsing = "Error parsing response data from user details: ",
                                      .object = "Server error. Please try again.",
                                      .keys = "Email or name not found in response"};

std::optional<UserDetails> detailsIn(const JSONValue& object)
{
    const auto email = textUnder(object, "email");
    const auto name = textUnder(object, "name");
    return email && name ? std::optional(UserDetails{*email, *name}) : std::nullopt;
}

} // namespace

BuiltRequest buildUserDetailsRequest(const std::string& url, std::string_view accessToken)
{
    const auto parsed = URL::parseAbsolute(url);
    return parsed ? makeGetRequest(*parsed, accessToken) : BuiltRequest::failure("Invalid URL");
}

Reading<UserDetails> readUserDetails(const ServiceReply& reply)
{
    return readReply<UserDetails>(reply, userDetailsTable, detailsIn);
}

void HandleApiRequests::fetchUserDetails(const std::string& url, const std::string& accessToken,
                                         UserDetailsCompletion completion)
{
    auto request = buildUserDetailsRequest(url, accessToken);
    if (!request) {
        print(request.error());
        return;
    }
    print("URL:", url);
    print("ACCESS TOKEN:", accessToken);
    sendRequest(std::move(request).value(), readUserDetails, [completion = std::move(completion)](auto details) {
        if (!details) {
            return;
        }
        DispatchQueue::main().async([details = std::move(details).value(), completion] {
            UserDetailsManager& manager = UserDetailsManager::shared();
            manager.setEmail(details.email);
            manager.name.set(details.name);
            completion(manager);
        });
    });
}

} // namespace quillmate
