#pragma once

#include <optional>
#include <type_traits>
#include <utility>
#include <variant>

namespace quillmate
{

/// A failure on its way into a `Result` of any value: `return Failure(error);`.
template<typename Error>
struct Failure {
    explicit Failure(Error failure)
        : error(std::move(failure))
    {
    }

    Error error;
};

/// Either a value or the failure that came in its place. Asking for the side that is not held is a programming error.
template<typename Value, typename Error>
class [[nodiscard]] Result
{
public:
    // Implicit, so that a function can return either side as it is.
    Result(Value value)
        : m_content(std::in_place_index<0>, std::move(value))
    {
    }
    template<typename Given>
    requires std::is_convertible_v<Given, Error> Result(Failure<Given> failure)
        : m_content(std::in_place_index<1>, std::move(failure.error))
    {
    }

    [[nodiscard]] static Result failure(Error error) { return Failure(std::move(error)); }

    [[nodiscard]] bool hasValue() const { return m_content.index() == 0; }
    explicit operator bool() const { return hasValue(); }

    [[nodiscard]] const Value& value() const& { return std::get<0>(m_content); }
    [[nodiscard]] Value&& value() && { return std::get<0>(std::move(m_content)); }
    [[nodiscard]] const Error& error() const& { return std::get<1>(m_content); }
    [[nodiscard]] Error&& error() && { return std::get<1>(std::move(m_content)); }

private:
    std::variant<Value, Error> m_content;
};

/// Nothing, or why it could not be done. `return {};` says that it was done.
template<typename Error>
class [[nodiscard]] Result<void, Error>
{
public:
    Result() = default;
    template<typename Given>
    requires std::is_convertible_v<Given, Error> Result(Failure<Given> failure)
        : m_error(std::move(failure.error))
    {
    }

    [[nodiscard]] static Result failure(Error error) { return Failure(std::move(error)); }

    [[nodiscard]] bool hasValue() const { return !m_error.has_value(); }
    explicit operator bool() const { return hasValue(); }

    [[nodiscard]] const Error& error() const& { return m_error.value(); }
    [[nodiscard]] Error&& error() && { return std::move(m_error).value(); }

private:
    std::optional<Error> m_error;
};

} // namespace quillmate
