#pragma once

namespace quillmate
{

/// Posted when the user has signed out, here or in another process, when the service has refused the token, and when a
/// developer has changed the environment: every live panel shows the sign-in screen.
constexpr auto userDidLogout = "UserDidLogout";
/// Posted when a developer has changed the environment.
constexpr auto apiEndpointChanged = "apiEndpointChanged";

} // namespace quillmate
