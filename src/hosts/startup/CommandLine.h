#pragma once

#include "base/Result.h"

#include <QCommandLineParser>

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace quillmate
{

/// What the words behind a program's name say. Words are bytes, as file names are. `--help` and `--version` are options
/// of every program; the last of several values counts; a value in a word of its own does not begin with `--`; what
/// stands behind a bare `--` is no option. Needs neither an application object nor a display.
class CommandLine
{
public:
    struct Option {
        const char* name; ///< without its hyphens
        bool hasValue = false;
    };

    explicit CommandLine(std::span<const Option> options);

    /// Reads the words. The failure is one sentence that names the word and says what to do. With `--help` or
    /// `--version` nothing else is looked at.
    Result<void, std::string> read(std::span<const std::string_view> words);
    /// Reads what the process was given and answers what needs no more: the help, the version, a failure. The result
    /// is the status to end with, or nothing when there is more to do.
    [[nodiscard]] std::optional<int> readProcess(int argc, char** argv, const char* program, const char* help);

    [[nodiscard]] bool isSet(const char* option) const { return m_parser.isSet(QLatin1String(option)); }
    [[nodiscard]] std::optional<std::string> value(const char* option) const;
    /// The words that are neither options nor their values.
    [[nodiscard]] std::vector<std::string> words() const;

private:
    /// What is wrong with the words, if anything is.
    [[nodiscard]] Result<void, std::string> check(std::span<const std::string_view> words) const;

    std::vector<Option> m_options;
    QCommandLineParser m_parser;
};

/// The exit status of a program that was started wrongly.
constexpr int usageStatus = 2;

/// Prints one line on standard error, the program's name first, and gives the status.
int complain(const char* program, const std::string& sentence, int status = usageStatus);

} // namespace quillmate
