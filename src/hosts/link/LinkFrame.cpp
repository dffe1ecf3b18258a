#include "hosts/link/LinkFrame.h"

#include "hosts/link/LinkFields.h"

#include <QString>

#include <algorithm>
#include <charconv>
#include <map>
#include <string_view>
#include <utility>

namespace quillmate
{
namespace
{

WindowFrame readFrame(JSONValue& value, LinkFields& outer)
{
    if (!value.object()) {
        outer.fail("The field \"frame\" must be an object of left, top, width and height.");
        return {};
    }
    LinkFields fields(value);
    const WindowFrame frame{fields.length("left"), fields.length("top"), fields.length("width"),
                            fields.length("height")};
    outer.fail(fields.error());
    return frame;
}

std::optional<MEMessage::Headers> readHeaders(JSONValue& value, LinkFields& fields)
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

MEEmailAddress readAddress(JSONValue& value, LinkFields& outer)
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

/// Null when it is none; what is wrong with it becomes `outer`'s error.
std::shared_ptr<const MEMessage> readMessage(JSONValue& value, LinkFields& outer)
{
    if (!value.object()) {
        outer.fail("A message must be an object.");
        return nullptr;
    }
    LinkFields fields(value);
    auto message = std::make_shared<MEMessage>();
    message->rawData = fields.bytesOrNull("rawData");
    message->rawDataFollows = fields.flag("rawDataFollows") && !message->rawData;
    message->subject = fields.text("subject");
    if (auto* address = fields.required("fromAddress")) {
        message->fromAddress = readAddress(*address, fields);
    }
    if (auto* headers = fields.required("headers")) {
        message->headers = readHeaders(*headers, fields);
    }
    outer.fail(fields.error());
    return message;
}

std::shared_ptr<const MEMessage> requiredMessage(LinkFields& fields)
{
    JSONValue* message = fields.required("message");
    if (message && !message->object()) {
        fields.fail("The field \"message\" must be a message.");
        return nullptr;
    }
    return message ? readMessage(*message, fields) : nullptr;
}

using Reader = LinkFrame (*)(LinkFields&);

LinkFrame readDidBegin(LinkFields& fields)
{
    ComposeSessionDidBegin frame{fields.text("session"), nullptr};
    if (auto* message = fields.required("originalMessage"); message && !message->isNull()) {
        frame.originalMessage = readMessage(*message, fields);
    }
    return frame;
}

LinkFrame readViewController(LinkFields& fields)
{
    ViewControllerForSession frame{fields.text("session"), std::nullopt};
    if (auto* window = fields.optional("frame")) {
        frame.frame = readFrame(*window, fields);
    }
    return frame;
}

LinkFrame readFrameDidChange(LinkFields& fields)
{
    ComposeSessionFrameDidChange frame{fields.text("session"), {}};
    if (auto* window = fields.required("frame")) {
        frame.frame = readFrame(*window, fields);
    }
    return frame;
}

LinkFrame readDidEnd(LinkFields& fields)
{
    return ComposeSessionDidEnd{fields.text("session")};
}

template<typename Question>
LinkFrame readQuestionOnMessage(LinkFields& fields)
{
    return LinkQuestion{fields.number("request"), Question{requiredMessage(fields)}};
}

template<typename Question>
LinkFrame readPlainQuestion(LinkFields& fields)
{
    return LinkQuestion{fields.number("request"), Question{}};
}

LinkFrame readChooseService(LinkFields& fields)
{
    return LinkQuestion{fields.number("request"), ChooseService{fields.text("choice")}};
}

LinkFrame readDecodedMessage(LinkFields& fields)
{
    return LinkQuestion{fields.number("request"), DecodedMessage{fields.bytes("data")}};
}

Reader readerFor(const std::string& type)
{
    static const std::map<std::string, Reader> readers = {
        {"composeSessionDidBegin", readDidBegin},
        {"viewControllerForSession", readViewController},
        {"composeSessionFrameDidChange", readFrameDidChange},
        {"composeSessionDidEnd", readDidEnd},
        {"decideActionForMessage", readQuestionOnMessage<DecideActionForMessage>},
        {"contentRulesJSON", readPlainQuestion<ContentRulesJSON>},
        {"getEncodingStatus", readQuestionOnMessage<GetEncodingStatus>},
        {"encodeMessage", readQuestionOnMessage<EncodeMessage>},
        {"decodedMessage", readDecodedMessage},
        {"programVersion", readPlainQuestion<ProgramVersion>},
        {"service", readPlainQuestion<Service>},
        {"chooseService", readChooseService},
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

/// The UTF-16 unit of the escape \uXXXX at that place; 0 where there is none.
unsigned escapedUnit(std::string_view json, std::size_t place)
{
    unsigned unit = 0;
    const std::string_view escape = json.substr(std::min(place, json.size()), 6);
    const bool isWhole = escape.size() == 6 && escape.starts_with("\\u") &&
                         std::from_chars(escape.data() + 2, escape.data() + 6, unit, 16).ptr == escape.data() + 6;
    return isWhole ? unit : 0;
}

void replaceLoneSurrogates(std::string& json)
{
    constexpr std::size_t escapeSize = 6;
    const auto isHigh = [](unsigned unit) { return unit >= 0xD800 && unit <= 0xDBFF; };
    const auto isLow = [](unsigned unit) { return unit >= 0xDC00 && unit <= 0xDFFF; };
    for (std::size_t at = json.find('\\'); at != std::string::npos; at = json.find('\\', at)) {
        const unsigned unit = escapedUnit(json, at);
        if (isHigh(unit) && isLow(escapedUnit(json, at + escapeSize))) {
            at += 2 * escapeSize;
            continue;
        }
        if (isHigh(unit) || isLow(unit)) {
            json.replace(at, escapeSize, "\\uFFFD");
        }
        at += 2; // Past the backslash and the character that it goes with, which may be another backslash.
    }
}

/// A long text of a message's source, which the frame holds without any white space around, is taken out before the
/// frame is read and put back behind it: the reader goes letter by letter, which costs 0.2 s with 25 MB.
class LongSource
{
public:
    explicit LongSource(std::string& json)
    {
        // Within a text of the frame these quotation marks would be escaped.
        constexpr std::string_view member = "\"rawData\":\"";
        constexpr std::size_t shortest = std::size_t{1024} * 1024;
        const std::size_t found = json.find(member);
        const std::size_t start = found == std::string::npos ? json.size() : found + member.size();
        const std::size_t end = json.find('"', start);
        if (end == std::string::npos || end - start < shortest || json.find('\\', start) < end) {
            return;
        }
        m_text = json.substr(start, end - start);
        json.erase(start, end - start);
    }

    void putBack(JSONValue& frame)
    {
        for (const char* message : {"originalMessage", "message"}) {
            JSONValue* around = m_text.empty() ? nullptr : frame.member(message);
            JSONValue* source = around ? around->member("rawData") : nullptr;
            if (source && source->string() && source->string()->empty()) {
                *source = std::exchange(m_text, {});
            }
        }
    }

private:
    std::string m_text;
};

} // namespace

Result<LinkRequest, LinkError> readLinkFrame(std::string bytes)
{
    using Read = Result<LinkRequest, LinkError>;
    LongSource source(bytes);
    replaceLoneSurrogates(bytes);
    auto parsed = JSONSerialization::jsonObject(bytes, JSONSerialization::Fragments::Allowed);
    if (!parsed) {
        return Read::failure({"The frame is not valid JSON: " + parsed.error().description, nullptr});
    }
    JSONValue object = std::move(parsed).value();
    source.putBack(object);
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
    LinkFields fields(object);
    LinkFrame frame = reader(fields);
    if (!fields.error().empty()) {
        return Read::failure({fields.error() + " (" + *type + ")", std::move(request)});
    }
    return LinkRequest{std::move(frame), std::move(request)};
}

} // namespace quillmate
