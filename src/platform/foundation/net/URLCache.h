#pragma once

namespace quillmate
{

/// The replies that the protocol allows to be kept, on disk in the application's cache folder. What was fetched with
/// one bearer token is never found with another.
class URLCache
{
public:
    static URLCache& shared();

    /// Any thread; returns at once. No request that is sent later finds a reply kept before.
    void removeAllCachedResponses();

private:
    URLCache() = default;
};

} // namespace quillmate
