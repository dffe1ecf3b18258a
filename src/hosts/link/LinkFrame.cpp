#include "hosts/link/LinkFrame.h"

#include <QByteArray>
#include <QString>

#include <cmath>
#include <map>

namespace quillmate
{
namespace
{

/// Collects the first thing that is wrong, so that the readers below read like the format.
class Fields
{
public:
    explicit Fields(const JSONValue& object)
        : m_object(object)
    {
    }

    [[nodiscard]] const std::string& error() const { return m_error; }

    const JSONValue* required(std::string_view key)
    {
        const JSONValue* value = m_object.member(key);
        if (!value) {
            fail("The field \"" + std::string(key) + "\" is missing.");
        }
        return value;
    }

    std::string text(std::string_view key)
    {
        const JSONValue* value = required(key);
        const std::string* text = value ? value->string() : nullptr;
        if (value && !text) {
            fail("The field \"" + std::string(key) + "\" must be a text.");
        }
        return text ? *text : std::string();
    }

    std::optional<std::string> textOrNull(std::string_view key)
    {
        const JSONValue* value = required(key);
        if (!value || value->isNull()) {
            return std::nullopt;
        }
        if (!value->string()) {
            fail("The field \"" + std::string(key) + "\" must be a text or null.");
            return std::nullopt;
        }
        return *value->string();
    }

    double length(std::string_view key)
    {
        // Far larger than any desktop; what is beyond is a mistake and must not reach the window system.
        constexpr double most = 1e6;
        const JSONValue* value = required(key);
        const JSONNumber* number = value ? value->number() : nullptr;
        const double length = number ? QString::fromStdString(number->text).toDouble() : 0;
        if (value && (!number || !std::isfinite(length) || std::abs(length) > most)) {
            fail("The field \"" + std::string(key) + "\" must be a number of points.");
        }
        return length;
    }

    void fail(std::string error)
    {
        if (m_error.empty()) {
            m_error = std::move(error);
        }
    }

private:
    const JSONValue& m_object;
    std::string m_error;
};

WindowFrame readFrame(const JSONValue& value, Fields& outer)
{
    if (!value.object()) {
        outer.fail("The field \"frame\" must be an object of left, top, width and height.");
        return {};
    }
    Fields fields(value);
    const WindowFrame frame{fields.length("left"), fields.length("top"), fields.length("width"),
                            fields.length("height")};
    if (!fields.error().empty()) {
        outer.fail(fields.error());
    }
    return frame;
}

std::optional<MEMessage::Headers> readHeaders(const JSONValue& value, Fields& fields)
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

std::optional<std::string> readRawData(const JSONValue& value, Fields& fields)
{
    if (value.isNull()) {
        return std::nullopt;
    }
    // One digit past the groups of four stands for no byte (RFC 4648): something is missing, and the decoder would not
    // say so.
    if (value.string() && value.string()->size() % 4 != 1) {
        const auto base64 =
            QByteArray::fromRawData(value.string()->data(), static_cast<qsizetype>(value.string()->size()));
        if (const auto decoded = QByteArray::fromBase64Encoding(base64, QByteArray::AbortOnBase64DecodingErrors)) {
            return decoded.decoded.toStdString();
        }
    }
    fields.fail("The field \"rawData\" must be null or a base64 text.");
    return std::nullopt;
}

std::shared_ptr<const MEMessage> readMessage(const JSONValue& value, Fields& outer)
{
    if (value.isNull()) {
        return nullptr;
    }
    if (!value.object()) {
        outer.fail("A message must be an object or null.");
        return nullptr;
    }
    Fields fields(value);
    auto message = std::make_shared<MEMessage>();
    if (const auto* rawData = fields.required("rawData")) {
        message->rawData = readRawData(*rawData, fields);
    }
    message->subject = fields.text("subject");
    if (const auto* address = fields.required("fromAddress")) {
        if (address->object()) {
            Fields addressFields(*address);
            message->fromAddress.addressString = addressFields.textOrNull("addressString");
            if (!addressFields.error().empty()) {
                fields.fail(addressFields.error());
            }
        } else {
            fields.fail("The field \"fromAddress\" must be an object.");
        }
    }
    if (const auto* headers = fields.required("headers")) {
        message->headers = readHeaders(*headers, fields);
    }
    if (!fields.error().empty()) {
        outer.fail(fields.error());
    }
    return message;
}

using Reader = LinkFrame (*)(const JSONValue&, Fields&);

LinkFrame readDidBegin(const JSONValue&, Fields& fields)
{
    ComposeSessionDidBegin frame{fields.text("session"), nullptr};
    if (const auto* message = fields.required("originalMessage")) {
        frame.originalMessage = readMessage(*message, fields);
    }
    return frame;
}

LinkFrame readViewController(const JSONValue& object, Fields& fields)
{
    ViewControllerForSession frame{fields.text("session"), std::nullopt};
    if (const auto* window = object.member("frame"); window && !window->isNull()) {
        frame.frame = readFrame(*window, fields);
    }
    return frame;
}

LinkFrame readFrameDidChange(const JSONValue&, Fields& fields)
{
    ComposeSessionFrameDidChange frame{fields.text("session"), {}};
    if (const auto* window = fields.required("frame")) {
        frame.frame = readFrame(*window, fields);
    }
    return frame;
}

LinkFrame readDidEnd(const JSONValue&, Fields& fields)
{
    return ComposeSessionDidEnd{fields.text("session")};
}

Reader readerFor(const std::string& type)
{
    static const std::map<std::string, Reader> readers = {
        {"composeSessionDidBegin", readDidBegin},
        {"viewControllerForSession", readViewController},
        {"composeSessionFrameDidChange", readFrameDidChange},
        {"composeSessionDidEnd", readDidEnd},
    };
    const auto found = readers.find(type);
    return found == readers.end() ? nullptr : found->second;
}

/// What a message of ours quotes of the other end's text.
std::string quoted(const std::string& text)
{
    constexpr qsizetype longest = 100;
    const QString shown = QString::fromStdString(text);
    return '"' + (shown.size() > longest ? shown.left(longest) + QStringLiteral("…") : shown).toStdString() + '"';
}

} // namespace

Result<LinkRequest, LinkError> readLinkFrame(std::string_view bytes)
{
    using Read = Result<LinkRequest, LinkError>;
    const auto parsed = JSONSerialization::jsonObject(bytes, JSONSerialization::Fragments::Allowed);
    if (!parsed) {
        return Read::failure({"The frame is not valid JSON: " + parsed.error().description, nullptr});
    }
    const JSONValue& object = parsed.value();
    if (!object.object()) {
        return Read::failure({"The frame is not a JSON object.", nullptr});
    }
    const JSONValue* requestMember = object.member("request");
    JSONValue request = requestMember && requestMember->number() ? *requestMember : JSONValue();
    const auto* type = object.stringMember("type");
    if (!type) {
        return Read::failure({"The field \"type\" is missing or not a text.", std::move(request)});
    }
    const Reader reader = readerFor(*type);
    if (!reader) {
        return Read::failure({"The type " + quoted(*type) + " is unknown.", std::move(request)});
    }
    Fields fields(object);
    LinkFrame frame = reader(object, fields);
    if (!fields.error().empty()) {
        return Read::failure({fields.error() + " (" + *type + ")", std::move(request)});
    }
    return LinkRequest{std::move(frame), std::move(request)};
}

std::string writeLinkError(const LinkError& error)
{
    JSONObject answer{{"type", "error"}, {"message", error.message}};
    if (!error.request.isNull()) {
        answer.emplace_back("request", error.request);
    }
    const auto encoded = JSONEncoder::encode(JSONValue(std::move(answer)));
    return encoded ? encoded.value() : R"({"type":"error","message":"The frame could not be obeyed."})";
}

} // namespace quillmate
