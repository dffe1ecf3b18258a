#pragma once

#include <utility>
#include <variant>

namespace quillmate
{

/// Either a value or the failure that came in its place. Asking for the side that is not held is a programming error.
template<typename Value, typename Error>
class Result
{
public:
    // Implicit, so that a function can return either side as it is.
    Result(Value value)
        : m_content(std::in_place_index<0>, std::move(value))
    {
    }

    [[nodiscard]] static Result failure(Error error) { return Result(std::in_place_index<1>, std::move(error)); }

    [[nodiscard]] bool hasValue() const { return m_content.index() == 0; }
    explicit operator bool() const { return hasValue(); }

    [[nodiscard]] const Value& value() const& { return std::get<0>(m_content); }
    [[nodiscard]] Value&& value() && { return std::get<0>(std::move(m_content)); }
    [[nodiscard]] const Error& error() const { return std::get<1>(m_content); }

private:
    Result(std::in_place_index_t<1> index, Error error)
        : m_content(index, std::move(error))
    {
    }

    std::variant<Value, Error> m_content;
};

} // namespace quillmate
