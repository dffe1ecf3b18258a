#pragma once

namespace quillmate
{

/// The replies that the protocol allows to be kept, in memory. What was fetched with one bearer token is never found
/// with another.
class URLCache
{
public:
    static URLCache& shared();

    /// Any thread; returns at once. No request that is sent later finds a reply kept before, nor one that
    /// was under way.
    void removeAllCachedResponses();

private:
    URLCache() = default;
};

} // namespace quillmate
