#pragma once

#include <string>
#include <string_view>

namespace quillmate::server
{

/// A new unguessable text of 256 random bits from the system, in the URL-safe base64 alphabet (RFC 4648, 5). Any
/// thread.
std::string randomSecret();
/// The SHA-256 of a text, 32 bytes.
std::string secretHash(std::string_view secret);
/// A secret for others than those who hold `secret`, in the same alphabet: its SHA-256, which does not lead back to it.
std::string derivedSecret(std::string_view secret);
/// Compares in a time that does not depend on where the texts differ.
bool sameSecret(std::string_view left, std::string_view right);

} // namespace quillmate::server
