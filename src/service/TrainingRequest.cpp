#include "service/HandleApiRequests.h"
#include "service/RequestSender.h"

namespace quillmate
{
namespace
{

constexpr ReplyTable trainingTable{.transport = "Error sending request: ",
                                   .parsing = "Server error. Please try again.",
                                   .keys = "The 'sucess' key does not exist or is not a string."};

} // namespace

BodyMembers TrainingDataBody::members() const
{
    return {{"email", email},
            {"question", question},
            {"answer", answer},
            {"plugin_source", pluginSource},
            {"plugin_version", pluginVersion}};
}

BuiltRequest buildRequest(const URL& url, std::string_view accessToken, const TrainingDataBody& body)
{
    return makePostRequest(url, accessToken, AcceptHeader::Omitted, body.members());
}

Reading<std::string> readTraining(const ServiceReply& reply)
{
    return readText(reply, trainingTable, "success");
}

void HandleApiRequests::sendTrainingData(const URL& url, const std::string& accessToken, const TrainingDataBody& body,
                                         TrainingCompletion completion, Failed failed)
{
    URLSession::shared().perform(
        [url, accessToken, body, completion = std::move(completion), failed = std::move(failed)] {
            auto request = buildRequest(url, accessToken, body);
            printPrivate("TRAINIG DATA BODY", describe(request, body.members()));
            if (!request) {
                print(request.error());
                failed();
                return;
            }
            sendRequest(std::move(request).value(), readTraining, [completion, failed](const auto& success) {
                if (success) {
                    completion(success.value());
                } else {
                    failed();
                }
            });
        });
}

} // namespace quillmate
