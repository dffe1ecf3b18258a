#pragma once

#include "server/signin/LoginForm.h"

#include <string>
#include <string_view>

namespace quillmate::server
{

/// A page of the sign-in: one HTML document without script, whose style is in the page itself.
std::string loginFormPage(const LoginForm& form, std::string_view action, std::string_view formToken);
/// The same with one button for the person who signed in with this browser before, and a way to the form above.
std::string continuePage(std::string_view name, std::string_view email, std::string_view action,
                         std::string_view formToken);
/// What the query of a page's address is when the form is wanted whoever signed in before.
inline constexpr std::string_view someoneElse = "someone-else";
/// A page that says one thing.
std::string noticePage(std::string_view title, std::string_view sentence);
/// The Content-Security-Policy (W3C CSP3) that allows these pages' own style and form and nothing else.
const std::string& pageSecurityPolicy();

} // namespace quillmate::server
