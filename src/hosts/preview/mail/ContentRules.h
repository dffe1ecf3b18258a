#pragma once

#include "base/Result.h"

#include <QRegularExpression>
#include <QString>
#include <string>
#include <string_view>
#include <vector>

namespace quillmate
{

/// The part of a content blocker's rules that bears on the images of a message. Immutable; not for two threads at once.
class ContentRules
{
public:
    /// Blocks nothing.
    ContentRules() = default;

    /// Reads a JSON array of objects with a "trigger" and an "action"; nothing at all gives no rules. One rule that is
    /// wrong spoils the whole list, since the others may lean on it; the failure is a sentence that names its place.
    static Result<ContentRules, std::string> parse(std::string_view json);

    /// Whether a message may not load the image at this absolute address: the last rule that matches decides.
    [[nodiscard]] bool blocksImage(const QString& address) const;

private:
    struct Rule {
        QRegularExpression filter;
        bool blocks = true; ///< else it lifts what the rules before it blocked
    };

    std::vector<Rule> m_rules;
};

} // namespace quillmate
