#include "service/RequestBodies.h"

namespace quillmate
{

Result<std::string, JSONError> SummarizeRequestBody::encode() const
{
    return JSONEncoder::encode(
        {{"content", content}, {"email", email}, {"plugin_source", pluginSource}, {"plugin_version", pluginVersion}});
}

Result<std::string, JSONError> GenerateResponseBody::encode() const
{
    return JSONEncoder::encode({{"messageId", messageId},
                                {"content", content},
                                {"email", email},
                                {"plugin_source", pluginSource},
                                {"plugin_version", pluginVersion}});
}

Result<std::string, JSONError> TrainingDataBody::encode() const
{
    return JSONEncoder::encode({{"email", email},
                                {"question", question},
                                {"answer", answer},
                                {"plugin_source", pluginSource},
                                {"plugin_version", pluginVersion}});
}

Result<std::string, JSONError> ChatStartBody::encode() const
{
    return JSONEncoder::encode({{"email", email},
                                {"plugin_source", pluginSource},
                                {"plugin_version", pluginVersion},
                                {"email_content", emailContent}});
}

Result<std::string, JSONError> ChatBody::encode() const
{
    return JSONEncoder::encode({{"assistantId", assistantId},
                                {"threadId", threadId},
                                {"email", email},
                                {"content", content},
                                {"plugin_source", pluginSource},
                                {"plugin_version", pluginVersion}});
}

} // namespace quillmate
