#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quillmate
{

/// A piece of HTML markup.
struct HtmlToken {
    enum class Kind { Text, StartTag, EndTag };
    struct Attribute {
        std::string name;       ///< lower case
        std::string_view value; ///< as it is written, without quotation marks; character references stand
    };

    Kind kind = Kind::Text;
    std::string_view text; ///< of Kind::Text, as it is written; character references stand
    std::string name;      ///< of a tag, lower case
    std::vector<Attribute> attributes;

    /// The value of the first attribute of that (lower-case) name, empty when there is none.
    [[nodiscard]] std::string_view value(std::string_view attribute) const;
    [[nodiscard]] bool has(std::string_view attribute) const;
};

/// Walks through HTML markup as mail programs write it: comments, declarations and the insides of scripts and styles
/// are passed over. Never fails: what is no tag is text, and a tag that the markup ends in is left out. Linear in the
/// size of the markup, whatever it is.
class HtmlMarkup
{
public:
    /// `html` outlives this object and the tokens it gives.
    explicit HtmlMarkup(std::string_view html)
        : m_rest(html)
    {
    }

    /// False at the end of the markup; the token then says nothing.
    bool next(HtmlToken& token);

private:
    bool skipsDeclaration();
    bool readTag(HtmlToken& token);
    HtmlToken::Attribute readAttribute();
    std::string_view readValue();
    std::string_view readQuoted(char mark);
    void skipInside(const std::string& name);
    std::string_view take(std::size_t length);

    std::string_view m_rest;
    bool m_scriptsEnd = true;
    bool m_stylesEnd = true;
    bool m_singleMarksEnd = true;
    bool m_doubleMarksEnd = true;
};

} // namespace quillmate
