#pragma once

#include <string>
#include <string_view>

namespace quillmate::server
{

/// What a person typed into the sign-in form, and what is wrong with it (empty: nothing).
struct LoginForm {
    std::string name;
    std::string email;
    std::string formToken;
    std::string nameError;
    std::string emailError;

    [[nodiscard]] bool isValid() const { return nameError.empty() && emailError.empty(); }
};

/// Reads an application/x-www-form-urlencoded body (WHATWG URL, 5.1) and checks it: blanks around a value are dropped,
/// the address is lowered in case. Name: 1 to 100 characters. Address: at most 254 octets (RFC 5321, 4.5.3.1), one "@"
/// with something before it (at most 64 octets) and a domain of dotted labels behind it.
LoginForm readLoginForm(std::string_view body);

} // namespace quillmate::server
