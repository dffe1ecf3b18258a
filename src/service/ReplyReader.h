#pragma once

#include "base/JSON.h"
#include "base/Result.h"
#include "platform/foundation/net/URLRequest.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quillmate
{

/// What the network hands over at the end of an exchange. Each part may be missing, whatever the others are.
struct ServiceReply {
    std::optional<std::string> data;
    std::optional<HTTPURLResponse> response;
    std::optional<URLError> error;
};

/// The stages of reading a reply, in their order. A reading ends at the first that fails.
enum class ReplyStage {
    Transport, ///< The transfer itself failed.
    Response,  ///< No HTTP response came back.
    Status,    ///< The status is outside 200 to 299.
    Body,      ///< No body was delivered; an empty one is a body.
    Parsing,   ///< The body is no JSON text.
    Object,    ///< The JSON value is not an object.
    Keys       ///< A key is missing, or its value is not of its type.
};

/// Where a reading ended.
struct ReplyFailure {
    ReplyStage stage = ReplyStage::Transport;
    /// What the request's table says of it; may be empty.
    std::string text;
    /// At the stage of the status; of a GET that asks for it, at any stage. 0 when there was none.
    int statusCode = 0;
    /// At the stage of the transport.
    std::optional<URLError> error = std::nullopt;
};

/// How the replies to one request are read. A text that ends with a blank goes before what the network or the parser
/// says of its failure, an empty one says nothing.
struct ReplyTable {
    /// The reply to a GET is read whatever its response and status, and a bare scalar is no JSON text there.
    enum class Method { Get, Post };
    /// Whether the texts are diagnostics, or sentences that the user sees.
    enum class Audience { Log, User };

    Method method = Method::Post;
    Audience audience = Audience::Log;
    std::string_view transport = {};
    std::string_view body = {};
    std::string_view parsing = {};
    /// Empty when a value that is not an object only lacks the keys.
    std::string_view object = {};
    /// Goes before a rendering of the object that was read, which is a diagnostic of its own; empty for none.
    std::string_view rendering = {};
    std::string_view keys = {};
};

/// What a reader makes of a reply.
template<typename Record>
struct Reading {
    Result<Record, ReplyFailure> result;
    /// The diagnostics to be printed, in their order.
    std::vector<std::string> lines = {};
};

/// The failure of a stage; what the log is to say of it is added to the lines.
[[nodiscard]] ReplyFailure failAt(ReplyStage stage, const ReplyTable& table, std::vector<std::string>& lines,
                                  const std::string& detail = {});

/// The stages up to the body.
[[nodiscard]] Result<const std::string*, ReplyFailure> readBody(const ServiceReply& reply, const ReplyTable& table,
                                                                std::vector<std::string>& lines);

/// The stages up to the keys.
[[nodiscard]] Result<JSONValue, ReplyFailure> readObject(const ServiceReply& reply, const ReplyTable& table,
                                                         std::vector<std::string>& lines);

/// The string under the key; nothing for a value of another type.
[[nodiscard]] std::optional<std::string> textUnder(const JSONValue& object, std::string_view key);

/// All the stages; `keys` makes the record of the object's members, or nothing when one is missing.
template<typename Record>
Reading<Record> readReply(const ServiceReply& reply, const ReplyTable& table,
                          const std::function<std::optional<Record>(const JSONValue& object)>& keys)
{
    using Read = Result<Record, ReplyFailure>;
    std::vector<std::string> lines;
    const auto object = readObject(reply, table, lines);
    if (!object) {
        return {Read::failure(object.error()), std::move(lines)};
    }
    auto record = keys(object.value());
    if (!record) {
        ReplyFailure failure = failAt(ReplyStage::Keys, table, lines);
        return {Read::failure(std::move(failure)), std::move(lines)};
    }
    return {std::move(*record), std::move(lines)};
}

/// All the stages, for a reply of which the string under one key is wanted.
[[nodiscard]] Reading<std::string> readText(const ServiceReply& reply, const ReplyTable& table, std::string_view key);

} // namespace quillmate
