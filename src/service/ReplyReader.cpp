#include "service/ReplyReader.h"

namespace quillmate
{
namespace
{

std::string_view textOf(ReplyStage stage, const ReplyTable& table)
{
    switch (stage) {
    case ReplyStage::Transport:
        return table.transport;
    case ReplyStage::Response:
        return "Invalid response received from the server.";
    case ReplyStage::Status:
        return "Server error: ";
    case ReplyStage::Body:
        return table.body;
    case ReplyStage::Parsing:
        return table.parsing;
    case ReplyStage::Object:
        return table.object;
    case ReplyStage::Keys:
        break;
    }
    return table.keys;
}

} // namespace

ReplyFailure failAt(ReplyStage stage, const ReplyTable& table, std::vector<std::string>& lines,
                    const std::string& detail)
{
    ReplyFailure failure{stage, std::string(textOf(stage, table))};
    if (failure.text.ends_with(' ')) {
        failure.text += detail;
    }
    if (table.audience == ReplyTable::Audience::Log && !failure.text.empty()) {
        lines.push_back(failure.text);
    }
    return failure;
}

Result<const std::string*, ReplyFailure> readBody(const ServiceReply& reply, const ReplyTable& table,
                                                  std::vector<std::string>& lines)
{
    using Read = Result<const std::string*, ReplyFailure>;
    if (reply.error) {
        const bool forUser = table.audience == ReplyTable::Audience::User;
        ReplyFailure failure = failAt(ReplyStage::Transport, table, lines,
                                      forUser ? reply.error->localizedDescription : reply.error->description());
        failure.error = reply.error;
        return Read::failure(std::move(failure));
    }
    if (table.method == ReplyTable::Method::Post) {
        if (!reply.response) {
            return Read::failure(failAt(ReplyStage::Response, table, lines));
        }
        if (const int status = reply.response->statusCode; status < 200 || status > 299) {
            ReplyFailure failure = failAt(ReplyStage::Status, table, lines, std::to_string(status));
            failure.statusCode = status;
            return Read::failure(std::move(failure));
        }
    }
    if (!reply.data) {
        return Read::failure(failAt(ReplyStage::Body, table, lines));
    }
    return &*reply.data;
}

Result<JSONValue, ReplyFailure> readObject(const ServiceReply& reply, const ReplyTable& table,
                                           std::vector<std::string>& lines)
{
    using Read = Result<JSONValue, ReplyFailure>;
    using Fragments = JSONSerialization::Fragments;
    const auto body = readBody(reply, table, lines);
    if (!body) {
        return Read::failure(body.error());
    }
    const bool isGet = table.method == ReplyTable::Method::Get;
    auto value = JSONSerialization::jsonObject(*body.value(), isGet ? Fragments::Refused : Fragments::Allowed);
    if (!value) {
        return Read::failure(failAt(ReplyStage::Parsing, table, lines, value.error().description));
    }
    const bool isObject = value.value().object() != nullptr;
    if (!isObject && !table.object.empty()) {
        return Read::failure(failAt(ReplyStage::Object, table, lines));
    }
    if (!table.rendering.empty()) {
        const auto rendering = JSONEncoder::encode(isObject ? value.value() : JSONValue(JSONObject()));
        lines.push_back(std::string(table.rendering) + (rendering ? rendering.value() : rendering.error().description));
    }
    return std::move(value).value();
}

std::optional<std::string> textUnder(const JSONValue& object, std::string_view key)
{
    const auto* text = object.stringMember(key);
    return text ? std::optional(*text) : std::nullopt;
}

Reading<std::string> readText(const ServiceReply& reply, const ReplyTable& table, std::string_view key)
{
    return readReply<std::string>(reply, table, [key](const JSONValue& object) { return textUnder(object, key); });
}

} // namespace quillmate
