#pragma once

#include "base/Result.h"

#include <QUrl>

#include <string>

namespace quillmate::server
{

/// Where a language model's server answers. The last three are asked for the size of the model's context: `models` by
/// the OpenAI protocol, `properties` of llama.cpp, `details` and `running` of Ollama.
struct ModelAddress {
    QUrl completions;
    QUrl models;
    QUrl properties;
    QUrl details;
    QUrl running;

    /// Whether what is sent there, a key too, passes another machine or the network unencrypted.
    [[nodiscard]] bool isInClear() const;
};

/// Whether it is an https or http URL with a host.
bool isWebUrl(const QUrl& url);

/// Reads the base of an OpenAI-compatible service: an https or http URL with or without the version ("/v1"), which is
/// added where no part of the path looks like one, with or without a slash or "/chat/completions" at its end. A user,
/// a query or a fragment is refused; the failure, a sentence that goes on after "it cannot be that: ", repeats no part
/// of the URL.
Result<ModelAddress, std::string> readModelAddress(const std::string& url);

/// Checks the key of the service: visible ASCII without blanks, since it becomes a header (RFC 6750, 2.1). The failure
/// is a sentence without it; an empty key is none.
Result<void, std::string> checkKey(const std::string& key);

} // namespace quillmate::server
