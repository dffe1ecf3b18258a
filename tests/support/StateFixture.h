#pragma once

#include "support/LogCapture.h"
#include "support/TestEnvironment.h"
#include "support/TestServer.h"

#include <optional>
#include <string>

namespace quillmate
{

/// A service behind the shared objects, and folders of the test's own.
class StateFixture
{
public:
    using Text = std::optional<std::string>;

    StateFixture();

    /// Nothing of the case before is under way, waits, is stored or was said; signed out, no message, no replies.
    void reset();
    /// A compose session of this message, from ana@a.example, begins.
    static void replyTo(const Text& messageId, const Text& content);
    static void signIn();
    /// Path and query of the question for a newer version, below the API's address.
    [[nodiscard]] static std::string versionCheck();

    TestServer& server() { return m_server; }
    [[nodiscard]] const TestServer& server() const { return m_server; }
    LogCapture& log() { return m_log; }

private:
    TestEnvironment m_environment;
    TestServer m_server;
    LogCapture m_log;
};

} // namespace quillmate
