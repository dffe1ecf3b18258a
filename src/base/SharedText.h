#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace quillmate
{

/// A text that never changes, held by as many as like at the price of one: a copy shares the bytes. Any thread.
class SharedText
{
public:
    SharedText() = default;
    // A text is one, wherever one is wanted.
    SharedText(std::string text)
        : m_owner(std::make_shared<const std::string>(std::move(text)))
        , m_view(*m_owner)
    {
    }
    SharedText(const char* text)
        : SharedText(std::string(text))
    {
    }

    /// A part of this text, given as a view into it; it keeps the whole.
    [[nodiscard]] SharedText part(std::string_view view) const
    {
        SharedText part = *this;
        part.m_view = view;
        return part;
    }

    [[nodiscard]] std::string_view view() const { return m_view; }
    operator std::string_view() const { return m_view; }
    [[nodiscard]] std::string copy() const { return std::string(m_view); }
    [[nodiscard]] bool empty() const { return m_view.empty(); }
    [[nodiscard]] std::size_t size() const { return m_view.size(); }

    /// Whether both look at the same bytes, which is more than that they are equal.
    [[nodiscard]] bool isOneWith(const SharedText& other) const { return m_view.data() == other.m_view.data(); }

    friend bool operator==(const SharedText& one, const SharedText& other) { return one.m_view == other.m_view; }

private:
    std::shared_ptr<const std::string> m_owner;
    std::string_view m_view;
};

} // namespace quillmate
