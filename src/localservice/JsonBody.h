#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace quillmate::localservice
{

/// The string members of a JSON object (RFC 8259), by key; a repeated key keeps its last value. Other members are
/// checked for form and passed over, so a body costs memory for its texts alone. Nothing when the text is no JSON
/// object.
std::optional<std::map<std::string, std::string, std::less<>>> readStringMembers(std::string_view json);

} // namespace quillmate::localservice
