#pragma once

#include <QString>

namespace quillmate
{

class TestServer;

/// Gives the process data and cache folders of its own, gone at its end. To be made before the first setting is read.
class TestEnvironment
{
public:
    TestEnvironment();

    [[nodiscard]] static QString dataFolder() { return path(QStringLiteral("data/quillmate")); }
    [[nodiscard]] static QString cacheFolder() { return path(QStringLiteral("cache/quillmate")); }
    [[nodiscard]] static QString path(const QString& name);

    /// Connects every service host of the build, and other.example, to the server, and trusts its root.
    static void connectTo(const TestServer& server);

    /// Files of the tests' certificates.
    static QString certificateFile(const QString& name);
};

} // namespace quillmate
