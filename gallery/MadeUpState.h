#pragma once

#include "platform/appkit/NSHostingController.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace quillmate
{

class RepliedMessage;
class SessionTabsViewState;
class ChatViewState;

/// What a panel is made of when nothing has happened yet.
struct Scene {
    /// Absent for a compose window without a message.
    std::optional<std::string> subject;
    std::string summary;
    std::string reply;
    /// Questions and answers, a question first.
    std::vector<std::string> conversation;
    bool updateAnnounced = false;
};

/// A message with a summary, a reply and a conversation.
[[nodiscard]] Scene usualScene();

/// The message of a scene.
[[nodiscard]] std::shared_ptr<const RepliedMessage> messageOf(const Scene& scene);
/// Fills the shared objects and the settings store with the scene, in place of what was there.
void setUp(const Scene& scene);

/// The session panel in a scene, changed as it is made.
[[nodiscard]] HostedView panelIn(const Scene& scene, const std::function<void(SessionTabsViewState&)>& change = {});
/// The stand-alone chat in a scene, likewise.
[[nodiscard]] HostedView chatIn(const Scene& scene, const std::function<void(ChatViewState&)>& change = {});

} // namespace quillmate
