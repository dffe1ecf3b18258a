#include "features/RepliedMessage.h"

#include "platform/foundation/schedule/DispatchQueue.h"
#include "platform/foundation/schedule/WorkQueue.h"
#include "platform/foundation/settings/UserDefaults.h"
#include "state/SettingsKeys.h"

#include <utility>

namespace quillmate
{
namespace
{

// Storing more than this takes longer than a blink.
constexpr std::size_t longContent = 1UL * 1024 * 1024;

} // namespace

std::optional<SharedText> RepliedMessage::content() const
{
    const std::lock_guard lock(m_mutex);
    return m_content;
}

bool RepliedMessage::hasContent() const
{
    const std::lock_guard lock(m_mutex);
    return m_content && !m_content->empty();
}

bool RepliedMessage::contentFollows() const
{
    const std::lock_guard lock(m_mutex);
    return m_contentFollows;
}

void RepliedMessage::receiveContent(std::optional<SharedText> content, bool follows) const
{
    std::vector<std::function<void()>> waiting;
    {
        const std::lock_guard lock(m_mutex);
        if (content) {
            m_content = std::move(content);
        }
        m_contentFollows = follows;
        waiting.swap(m_waiting);
    }
    for (auto& told : waiting) {
        DispatchQueue::main().async(std::move(told));
    }
}

void RepliedMessage::whenContentArrives(std::function<void()> told) const
{
    const std::lock_guard lock(m_mutex);
    m_waiting.push_back(std::move(told));
}

bool RepliedMessage::canGiveWayTo(const RepliedMessage& other) const
{
    if (m_messageId == other.m_messageId && m_hasSubject == other.m_hasSubject) {
        return false; // There is no need to.
    }
    const std::lock_guard lock(m_mutex);
    return (m_own.empty() || m_ownPeriod.isOver()) && (m_draft.empty() || m_draftPeriod.isOver());
}

std::optional<std::string> RepliedMessage::fallbackContent() const
{
    return string(SettingsKeys::fallbackContent(messageId()));
}

void RepliedMessage::storeFallbackContent(const SharedText& text, const SignInPeriod& period) const
{
    setString(SettingsKeys::fallbackContent(messageId()), text.copy(), period);
}

void RepliedMessage::keepOwnContent(const std::shared_ptr<const RepliedMessage>& message, const SignInPeriod& period)
{
    UserDefaults& defaults = UserDefaults::standard(); // Made before the queue that uses it, and so gone after it.
    const auto keep = [&defaults, message, period] {
        const std::string key = SettingsKeys::fallbackContent(message->messageId());
        const bool isKept = message->m_hasKeysAlone ? defaults.size(key) > 0 : message->own(key).has_value();
        if (!isKept) {
            message->storeFallbackContent(*message->content(), period);
        }
    };
    if (message->content()->size() <= longContent) {
        keep();
        return;
    }
    static WorkQueue queue;
    queue.async(keep);
}

std::string RepliedMessage::draft() const
{
    const std::lock_guard lock(m_mutex);
    return m_draftPeriod.isOver() ? std::string() : m_draft;
}

void RepliedMessage::setDraft(std::string text, const SignInPeriod& period) const
{
    const std::lock_guard lock(m_mutex);
    m_draft = std::move(text);
    m_draftPeriod = period;
}

std::optional<SettingsValue> RepliedMessage::own(const std::string& key) const
{
    const std::lock_guard lock(m_mutex);
    const auto found = m_ownPeriod.isOver() ? m_own.end() : m_own.find(key);
    return found == m_own.end() ? std::nullopt : std::optional(found->second);
}

void RepliedMessage::keepOwn(const std::string& key, SettingsValue value, const SignInPeriod& period) const
{
    if (m_hasKeysAlone || period.isOver()) {
        return;
    }
    const std::lock_guard lock(m_mutex);
    if (m_ownPeriod.isOver()) {
        m_own.clear();
        m_ownPeriod = period;
    }
    m_own.insert_or_assign(key, std::move(value));
}

std::optional<std::string> RepliedMessage::string(const std::string& key) const
{
    if (m_hasKeysAlone) {
        return UserDefaults::standard().string(key);
    }
    const auto value = own(key);
    const auto* text = value ? std::get_if<std::string>(&*value) : nullptr;
    return text ? std::optional(*text) : std::nullopt;
}

bool RepliedMessage::boolean(const std::string& key) const
{
    return m_hasKeysAlone ? UserDefaults::standard().boolean(key) : own(key) == std::optional(SettingsValue(true));
}

std::optional<std::string> RepliedMessage::data(const std::string& key) const
{
    if (m_hasKeysAlone) {
        return UserDefaults::standard().data(key);
    }
    const auto value = own(key);
    const auto* data = value ? std::get_if<SettingsData>(&*value) : nullptr;
    return data ? std::optional(data->bytes) : std::nullopt;
}

void RepliedMessage::setString(const std::string& key, std::string text, const SignInPeriod& period) const
{
    keepOwn(key, text, period);
    UserDefaults::standard().setString(key, std::move(text), period.logouts());
}

void RepliedMessage::setBoolean(const std::string& key, bool value, const SignInPeriod& period) const
{
    keepOwn(key, value, period);
    UserDefaults::standard().setBoolean(key, value, period.logouts());
}

} // namespace quillmate
