#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace quillmate
{

/// What a program carries with it: the information dictionary and the resources built into it. Immutable; any thread.
class Bundle
{
public:
    static const Bundle& main();

    explicit Bundle(std::map<std::string, std::string, std::less<>> informationDictionary);

    /// The text under a key of the information dictionary, absent when the entry is missing.
    [[nodiscard]] std::optional<std::string> object(std::string_view informationDictionaryKey) const;
    /// The address under which Qt finds a resource of that name and ending ("qrc:/…"), absent when there is none.
    [[nodiscard]] std::optional<std::string> url(std::string_view resource, std::string_view extension) const;
    /// The bytes of a resource, absent when there is none or it cannot be read.
    [[nodiscard]] std::optional<std::string> contents(std::string_view resource, std::string_view extension) const;

private:
    std::map<std::string, std::string, std::less<>> m_informationDictionary;
};

} // namespace quillmate
