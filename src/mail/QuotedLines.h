#pragma once

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>

namespace quillmate
{

/// Collects text as lines: blanks collapse, line ends are held back until text follows, and each line begins with the
/// marks of its quotation ("> ", one ">" more for each quotation in a quotation).
class QuotedLines
{
public:
    void addText(std::string_view text)
    {
        if (text.empty()) {
            return;
        }
        if (m_heldLineEnds > 0 && !m_text.empty()) {
            for (int i = 1; i < m_heldLineEnds; ++i) {
                m_text.append("\n").append(marks(std::min(m_quotation, m_lastQuotation)));
            }
            m_text.push_back('\n');
        }
        if (m_heldLineEnds > 0 || m_text.empty()) {
            m_text.append(marks(m_quotation)).append(m_quotation > 0 ? " " : "");
        } else if (m_heldBlank && !m_text.ends_with(' ')) {
            m_text.push_back(' ');
        }
        m_text.append(m_heldItem ? "- " : "");
        m_heldLineEnds = 0;
        m_heldBlank = false;
        m_heldItem = false;
        m_lastQuotation = m_quotation;
        m_text.append(text);
    }

    /// Marks the next text as an item of a list, unless the item ends without any.
    void beginItem() { m_heldItem = true; }
    void endItem() { m_heldItem = false; }
    void addBlank() { m_heldBlank = true; }
    void endLine() { m_heldLineEnds = std::max(m_heldLineEnds, 1); }
    void breakLine() { m_heldLineEnds = std::min(m_heldLineEnds + 1, 2); }
    void endParagraph() { m_heldLineEnds = 2; }
    /// Quotes what follows deeper by `change`.
    void quote(int change) { m_quotation += change; }

    [[nodiscard]] std::size_t size() const { return m_text.size(); }
    std::string take() { return std::move(m_text); }

private:
    static std::string marks(int quotation)
    {
        // A deeper quotation is shown at this depth, so that nesting costs no memory.
        constexpr int deepestQuotation = 16;
        return std::string(static_cast<std::size_t>(std::min(quotation, deepestQuotation)), '>');
    }

    std::string m_text;
    int m_heldLineEnds = 0;
    int m_quotation = 0;
    int m_lastQuotation = 0; ///< of the last line with text
    bool m_heldBlank = false;
    bool m_heldItem = false;
};

} // namespace quillmate
