#include "platform/foundation/schedule/DispatchQueue.h"
#include "service/HandleApiRequests.h"
#include "service/RequestSender.h"
#include "state/AuthManager.h"
#include "state/SignInPeriod.h"

namespace quillmate
{
namespace
{

constexpr int unauthorized = 401; // RFC 9110, 15.5.2

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
    auto reading = readReply<UserDetails>(reply, userDetailsTable, detailsIn);
    const int status = reply.response ? reply.response->statusCode : 0;
    if (reading.result) {
        UserDetails details = std::move(reading.result).value();
        details.isRefused = status == unauthorized;
        reading.result = std::move(details);
    } else {
        ReplyFailure failure = std::move(reading.result).error();
        failure.statusCode = status;
        reading.result = Failure(std::move(failure));
    }
    return reading;
}

void HandleApiRequests::fetchUserDetails(const std::string& url, const std::string& accessToken,
                                         UserDetailsCompletion completion, Failed failed)
{
    auto request = buildUserDetailsRequest(url, accessToken);
    if (!request) {
        print(request.error());
        failed();
        return;
    }
    print("URL:", url);
    printPrivate("ACCESS TOKEN:", accessToken);
    sendRequest(
        std::move(request).value(), readUserDetails,
        [accessToken, period = SignInPeriod(), completion = std::move(completion),
         failed = std::move(failed)](auto details) {
            const bool isRefused = details ? details.value().isRefused : details.error().statusCode == unauthorized;
            if (!details || (isRefused && AuthManager::shared().accessToken.get() == accessToken)) {
                if (isRefused) {
                    DispatchQueue::main().async([accessToken] { AuthManager::shared().endSignIn(accessToken); });
                }
                failed();
                return;
            }
            DispatchQueue::main().async([details = std::move(details).value(), period, completion, failed] {
                if (period.isTokenGone()) {
                    failed();
                    return;
                }
                UserDetailsManager& manager = UserDetailsManager::shared();
                manager.setEmail(details.email);
                manager.name.set(details.name);
                completion(manager);
            });
        });
}

} // namespace quillmate
