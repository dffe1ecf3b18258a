#include "server/signin/SignInSessions.h"

#include "server/signin/Secrets.h"

#include <algorithm>

namespace quillmate::server
{

void SignInSessions::dropEnded()
{
    const auto now = m_clock();
    std::erase_if(m_sessions, [now](const auto& entry) { return entry.second.end <= now; });
}

std::string SignInSessions::pageOf(const std::string& id)
{
    return derivedSecret(id);
}

SignInSessions::Session* SignInSessions::find(const std::string& page)
{
    const auto found = m_sessions.find(page);
    if (found == m_sessions.end()) {
        return nullptr;
    }
    if (found->second.end <= m_clock()) {
        m_sessions.erase(found);
        return nullptr;
    }
    return &found->second;
}

std::optional<std::string> SignInSessions::begin()
{
    const std::lock_guard lock(m_mutex);
    dropEnded();
    if (m_sessions.size() >= limit) {
        return std::nullopt;
    }
    std::string id = randomSecret();
    m_sessions.emplace(pageOf(id), Session{m_clock() + life, {randomSecret(), std::nullopt}});
    return id;
}

std::optional<SignInSessions::State> SignInSessions::state(const std::string& page)
{
    const std::lock_guard lock(m_mutex);
    const Session* session = find(page);
    return session == nullptr ? std::nullopt : std::optional(session->state);
}

std::optional<SignInSessions::State> SignInSessions::fetch(const std::string& id)
{
    const std::lock_guard lock(m_mutex);
    Session* session = find(pageOf(id));
    if (session == nullptr) {
        return std::nullopt;
    }
    if (session->state.accessToken && !session->delivered) {
        session->delivered = true;
        session->end = std::min(session->end, m_clock() + lifeAfterDelivery);
    }
    return session->state;
}

Result<SignInSessions::Outcome, StoreFailure> SignInSessions::complete(const std::string& page,
                                                                       const std::string& formToken, const Issue& issue)
{
    const std::lock_guard lock(m_mutex);
    Session* session = find(page);
    if (session == nullptr) {
        return Outcome::Unknown;
    }
    if (session->state.accessToken) {
        return Outcome::AlreadySignedIn;
    }
    if (!sameSecret(session->state.formToken, formToken)) {
        return Outcome::WrongFormToken;
    }
    auto token = issue();
    if (!token) {
        return Failure(token.error());
    }
    session->state.accessToken = std::move(token).value();
    session->state.formToken.clear();
    return Outcome::SignedIn;
}

} // namespace quillmate::server
