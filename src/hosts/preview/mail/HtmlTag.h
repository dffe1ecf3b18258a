#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quillmate
{

/// A start tag of HTML markup.
struct HtmlTag {
    struct Attribute {
        std::string name;       ///< lower case
        std::string_view value; ///< as it is written, without quotation marks; character references stand
    };

    std::string name; ///< lower case
    std::vector<Attribute> attributes;

    /// The value of the first attribute of that (lower-case) name, empty when there is none.
    [[nodiscard]] std::string_view value(std::string_view attribute) const;
};

/// Walks through the start tags of HTML markup in their order; comments, and the insides of scripts and styles, are
/// passed over. Linear in the size of the markup, whatever it is.
class HtmlTagReader
{
public:
    /// `html` outlives this object and the tags it gives.
    explicit HtmlTagReader(std::string_view html)
        : m_rest(html)
    {
    }

    /// False at the end of the markup.
    bool next(HtmlTag& tag);

private:
    bool readTag(HtmlTag& tag);
    HtmlTag::Attribute readAttribute();
    std::string_view readValue();
    void skipBlanks();
    void skipInside(const std::string& name);
    std::string_view take(std::size_t length);

    std::string_view m_rest;
    bool m_scriptsEnd = true;
    bool m_stylesEnd = true;
};

} // namespace quillmate
