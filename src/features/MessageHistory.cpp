#include "features/MessageHistory.h"

#include "base/JSONDecoder.h"

#include <algorithm>
#include <array>
#include <bit>
#include <iterator>
#include <set>
#include <span>
#include <utility>

namespace quillmate
{
namespace
{

constexpr std::string_view idKey = "id";
constexpr std::string_view textKey = "text";
constexpr std::string_view responseKey = "response";
constexpr std::string_view senderKey = "isSentByCurrentUser";

/// An optional text; false for a value that is neither a text nor none.
bool readText(const JSONMember& member, std::optional<std::string>& text)
{
    if (const auto* found = std::get_if<std::string_view>(&member)) {
        text = std::string(*found);
        return true;
    }
    return std::holds_alternative<std::monostate>(member) || std::holds_alternative<std::nullptr_t>(member);
}

/// Reads one message, or says what is wrong with it.
Result<void, std::string> readMessage(std::span<const JSONMember> members, Message& message)
{
    const auto* idText = std::get_if<std::string_view>(&members[0]);
    const auto id = idText ? UUID::parse(*idText) : std::nullopt;
    if (!id) {
        return Failure("a message has no valid \"id\"");
    }
    const bool* sender = std::get_if<bool>(&members[3]);
    if (!sender) {
        return Failure("a message has no valid \"isSentByCurrentUser\"");
    }
    message.id = *id;
    message.isSentByCurrentUser = *sender;
    if (!readText(members[1], message.text)) {
        return Failure("a message's \"text\" is not a text");
    }
    if (!readText(members[2], message.response)) {
        return Failure("a message's \"response\" is not a text");
    }
    return {};
}

/// A size that is reached by filling up with blanks, at most a thirty-second more. Short forms take none.
std::size_t withRoom(std::size_t size)
{
    constexpr std::size_t shortForm = 1 << 16;
    if (size < shortForm) {
        return size;
    }
    const std::size_t step = std::bit_floor(size) / 32;
    return (size + step - 1) / step * step;
}

Result<std::string, JSONError> encodeMessage(const Message& message)
{
    JSONObject members{{std::string(idKey), message.id.uuidString()}};
    if (message.text) {
        members.emplace_back(textKey, *message.text);
    }
    if (message.response) {
        members.emplace_back(responseKey, *message.response);
    }
    members.emplace_back(senderKey, message.isSentByCurrentUser);
    return JSONEncoder::encode(JSONValue(std::move(members)));
}

} // namespace

Result<MessageHistory, JSONError> MessageHistory::decode(std::string_view bytes)
{
    constexpr std::array keys{idKey, textKey, responseKey, senderKey};
    std::vector<Message> messages;
    const auto decoded = JSONDecoder::decodeRecords(
        bytes, keys, [&messages](std::span<const JSONMember> members) { // As many as there are keys.
            return readMessage(members, messages.emplace_back());
        });
    if (!decoded) {
        return Failure(decoded.error());
    }
    return MessageHistory(std::move(messages));
}

bool MessageHistory::hasSameTexts(const MessageHistory& other) const
{
    return std::equal(m_messages.begin(), m_messages.end(), other.m_messages.begin(), other.m_messages.end(),
                      [](const Message& one, const Message& two) {
                          return one.text == two.text && one.response == two.response &&
                                 one.isSentByCurrentUser == two.isSentByCurrentUser;
                      });
}

void MessageHistory::appendUnknown(const MessageHistory& other)
{
    // Most often one is the beginning of the other.
    const auto& theirs = other.m_messages;
    const auto [mine, first] = std::mismatch(m_messages.begin(), m_messages.end(), theirs.begin(), theirs.end());
    std::set<UUID> known;
    std::transform(mine, m_messages.end(), std::inserter(known, known.end()), [](const Message& m) { return m.id; });
    std::copy_if(first, theirs.end(), std::back_inserter(m_messages),
                 [&known](const Message& message) { return !known.contains(message.id); });
}

Result<std::string_view, JSONError> MessageHistory::encode()
{
    m_encoded.resize(m_length);
    for (; m_encodedCount < m_messages.size(); ++m_encodedCount) {
        auto message = encodeMessage(m_messages[m_encodedCount]);
        if (!message) {
            return Failure(std::move(message).error());
        }
        m_encoded += m_encodedCount == 0 ? '[' : ',';
        m_encoded += message.value();
        m_length = m_encoded.size();
    }
    m_encoded += m_messages.empty() ? "[]" : "]";
    m_encoded.resize(withRoom(m_encoded.size()), ' ');
    return std::string_view(m_encoded);
}

bool MessageHistory::continues(std::string_view stored) const
{
    const auto end = stored.find_last_not_of(' ');
    if (end == std::string_view::npos || stored[end] != ']') {
        return false;
    }
    const auto encoded = std::string_view(m_encoded).substr(0, m_length);
    return encoded.starts_with(stored.substr(0, end)) && (end == m_length || encoded[end] == ',');
}

} // namespace quillmate
