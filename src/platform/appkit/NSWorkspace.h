#pragma once

#include "platform/foundation/net/URL.h"

#include <functional>

namespace quillmate
{

/// The desktop, as far as the system needs it.
class NSWorkspace
{
public:
    static NSWorkspace& shared();

    /// Opens a web page in the user's browser. Only https and http go there; anything else, and a desktop that has no
    /// browser, costs one diagnostic line and gives false. Main thread.
    bool open(const URL& url);

    /// Puts another opener in the browser's place; an empty one brings the browser back.
    void setOpener(std::function<bool(const URL&)> opener) { m_opener = std::move(opener); }

private:
    NSWorkspace() = default;

    std::function<bool(const URL&)> m_opener;
};

} // namespace quillmate
