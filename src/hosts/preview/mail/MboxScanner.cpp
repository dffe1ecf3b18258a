#include "hosts/preview/mail/MboxScanner.h"

#include "mail/SourceText.h"

#include <algorithm>

namespace quillmate
{
namespace
{

// Longer than any header field's name in use, so that a field is known by its beginning.
constexpr std::size_t lineHeadBytes = 256;

} // namespace

void MboxScanner::feed(std::string_view bytes)
{
    while (!bytes.empty()) {
        const std::size_t lineFeed = bytes.find('\n');
        const bool complete = lineFeed != std::string_view::npos;
        const std::size_t length = complete ? lineFeed + 1 : bytes.size();
        if (m_lineHead.size() < lineHeadBytes) {
            m_lineHead.append(bytes.substr(0, std::min(length, lineHeadBytes - m_lineHead.size())));
        }
        m_position += length;
        bytes.remove_prefix(length);
        if (complete) {
            endLine(m_position);
        }
    }
}

void MboxScanner::endLine(std::uint64_t nextLineStart)
{
    if (m_mayFollowSeparator && beginsHeaderField(m_lineHead)) {
        closeMessage(m_separatorStart - m_blankBytes);
        m_ranges.push_back({m_lineStart, 0});
        m_open = true;
    }
    const bool atStart = m_lineStart == 0;
    m_mayFollowSeparator = (atStart || m_previousBlank > 0) && m_lineHead.starts_with("From ");
    if (m_mayFollowSeparator) {
        m_separatorStart = m_lineStart;
        m_blankBytes = m_previousBlank;
    }
    const bool isBlank = m_lineHead == "\n" || m_lineHead == "\r\n";
    m_previousBlank = isBlank ? m_lineHead.size() : 0;
    m_lineHead.clear();
    m_lineStart = nextLineStart;
}

void MboxScanner::closeMessage(std::uint64_t end)
{
    if (m_open) {
        Range& range = m_ranges.back();
        range.length = std::max(end, range.offset) - range.offset;
        m_open = false;
    }
}

std::vector<MboxScanner::Range> MboxScanner::finish()
{
    if (!m_lineHead.empty()) {
        endLine(m_position);
    }
    closeMessage(m_position - m_previousBlank);
    return std::move(m_ranges);
}

} // namespace quillmate
