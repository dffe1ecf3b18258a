#include "service/RequestBodies.h"

#include <string_view>
#include <utility>
#include <vector>

namespace quillmate
{
namespace
{

using Members = std::vector<std::pair<std::string_view, std::string_view>>;

Members membersOf(const TrainingDataBody& body)
{
    return {{"email", body.email},
            {"question", body.question},
            {"answer", body.answer},
            {"plugin_source", body.pluginSource},
            {"plugin_version", body.pluginVersion}};
}

Members membersOf(const ChatStartBody& body)
{
    return {{"email", body.email},
            {"plugin_source", body.pluginSource},
            {"plugin_version", body.pluginVersion},
            {"email_content", body.emailContent}};
}

/// What goes on the wire; for texts that cannot go there, the same with only their printable ASCII.
std::string describe(const Members& members)
{
    if (auto encoded = JSONEncoder::encode(members)) {
        return std::move(encoded).value();
    }
    std::vector<std::string> readable;
    readable.reserve(members.size()); // The members below look into it.
    Members shown;
    for (const auto& [key, text] : members) {
        std::string& kept = readable.emplace_back(text);
        for (char& byte : kept) {
            byte = byte >= ' ' && byte <= '~' ? byte : '?';
        }
        shown.emplace_back(key, kept);
    }
    return JSONEncoder::encode(shown).value();
}

} // namespace

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
    return JSONEncoder::encode(membersOf(*this));
}

std::string TrainingDataBody::description() const
{
    return describe(membersOf(*this));
}

Result<std::string, JSONError> ChatStartBody::encode() const
{
    return JSONEncoder::encode(membersOf(*this));
}

std::string ChatStartBody::description() const
{
    return describe(membersOf(*this));
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
