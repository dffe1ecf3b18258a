#include "localservice/JsonBody.h"

#include <nlohmann/json.hpp>

namespace quillmate::localservice
{

namespace
{

using Json = nlohmann::json;

/// Keeps the strings one level down and forgets the rest.
class StringMembers : public nlohmann::json_sax<Json>
{
public:
    std::map<std::string, std::string, std::less<>> members;
    bool isObject = false;

    bool null() override { return other(); }
    bool boolean(bool) override { return other(); }
    bool number_integer(number_integer_t) override { return other(); }
    bool number_unsigned(number_unsigned_t) override { return other(); }
    bool number_float(number_float_t, const string_t&) override { return other(); }
    bool binary(binary_t&) override { return other(); }
    bool string(string_t& value) override
    {
        if (m_depth == 1 && isObject) {
            members[m_key] = std::move(value);
        }
        return true;
    }
    bool start_object(std::size_t) override
    {
        if (m_depth == 0) {
            isObject = true;
        } else {
            other();
        }
        ++m_depth;
        return true;
    }
    bool end_object() override
    {
        --m_depth;
        return true;
    }
    bool start_array(std::size_t) override
    {
        other();
        ++m_depth;
        return true;
    }
    bool end_array() override
    {
        --m_depth;
        return true;
    }
    bool key(string_t& value) override
    {
        if (m_depth == 1) {
            m_key = std::move(value);
        }
        return true;
    }
    bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception&) override { return false; }

private:
    /// A value that is no string takes the place of an earlier string of the same key.
    bool other()
    {
        if (m_depth == 1) {
            members.erase(m_key);
        }
        return true;
    }

    std::size_t m_depth = 0;
    std::string m_key;
};

} // namespace

std::optional<std::map<std::string, std::string, std::less<>>> readStringMembers(std::string_view json)
{
    StringMembers reader;
    if (!Json::sax_parse(json, &reader) || !reader.isObject) {
        return std::nullopt;
    }
    return std::move(reader.members);
}

} // namespace quillmate::localservice
