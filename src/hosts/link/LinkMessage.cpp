#include "hosts/link/LinkMessage.h"

namespace quillmate
{
namespace
{

std::optional<MEMessage::Headers> readHeaders(const JSONValue& value, LinkFields& fields)
{
    if (value.isNull()) {
        return std::nullopt;
    }
    const auto wrong = [&fields] {
        fields.fail("The field \"headers\" must be null or an object of lists of texts.");
        return std::nullopt;
    };
    if (!value.object()) {
        return wrong();
    }
    MEMessage::Headers headers;
    for (const auto& [name, values] : *value.object()) {
        if (!values.array()) {
            return wrong();
        }
        auto& list = headers[name];
        list.clear();
        for (const JSONValue& entry : *values.array()) {
            if (!entry.string()) {
                return wrong();
            }
            list.push_back(*entry.string());
        }
    }
    return headers;
}

MEEmailAddress readAddress(const JSONValue& value, LinkFields& outer)
{
    if (!value.object()) {
        outer.fail("The field \"fromAddress\" must be an object.");
        return {};
    }
    LinkFields fields(value);
    MEEmailAddress address{fields.textOrNull("addressString")};
    outer.fail(fields.error());
    return address;
}

} // namespace

std::shared_ptr<const MEMessage> readLinkMessage(const JSONValue& value, LinkFields& outer)
{
    if (!value.object()) {
        outer.fail("A message must be an object.");
        return nullptr;
    }
    LinkFields fields(value);
    auto message = std::make_shared<MEMessage>();
    message->rawData = fields.bytesOrNull("rawData");
    message->subject = fields.text("subject");
    if (const auto* address = fields.required("fromAddress")) {
        message->fromAddress = readAddress(*address, fields);
    }
    if (const auto* headers = fields.required("headers")) {
        message->headers = readHeaders(*headers, fields);
    }
    outer.fail(fields.error());
    return message;
}

} // namespace quillmate
