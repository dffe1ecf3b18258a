#pragma once

#include "platform/foundation/schedule/MainSchedule.h"
#include "support/StateFixture.h"

#include <QStringList>

namespace quillmate
{

/// A signed-in user who replies to a message, and a service behind the features. Time stands still.
class FeatureFixture : public StateFixture
{
public:
    /// Signed in as e@a.example, replying to m1 with "The content", nothing stored, nothing said or asked so far.
    void reset();

    /// The requests received as "/chat/send Bearer token {…}", path below the API's.
    [[nodiscard]] QStringList sent() const;
    /// The whole settings store as "key=value".
    [[nodiscard]] static QStringList stored();

private:
    ManualTime m_time;
};

/// What the plugin says of itself in every body.
constexpr auto pluginMembers = R"("plugin_source":"plugin_apple","plugin_version":"v1.0.0")";

} // namespace quillmate
