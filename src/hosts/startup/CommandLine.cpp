#include "hosts/startup/CommandLine.h"

#include "base/TerminalText.h"

#include <algorithm>
#include <cstdio>
#include <unistd.h>

namespace quillmate
{
namespace
{

constexpr auto helpOption = "help";
constexpr auto versionOption = "version";

// Latin-1 stands for the bytes one to one, whatever the file names among them are encoded in.
QString textOf(std::string_view word)
{
    return QString::fromLatin1(word.data(), static_cast<qsizetype>(word.size()));
}

std::string bytesOf(const QString& text)
{
    return text.toLatin1().toStdString();
}

} // namespace

CommandLine::CommandLine(std::span<const Option> options)
    : m_options(options.begin(), options.end())
{
    m_options.push_back({helpOption});
    m_options.push_back({versionOption});
    for (const Option& option : m_options) {
        const QString name = QString::fromLatin1(option.name);
        m_parser.addOption(option.hasValue ? QCommandLineOption(name, {}, name) : QCommandLineOption(name));
    }
}

Result<void, std::string> CommandLine::check(std::span<const std::string_view> words) const
{
    for (std::size_t i = 0; i < words.size() && words[i] != "--"; ++i) {
        if (!words[i].starts_with('-') || words[i] == "-") {
            continue;
        }
        const std::string_view name = words[i].substr(0, words[i].find('='));
        const bool hasValue = name != words[i];
        const auto option = std::find_if(m_options.begin(), m_options.end(), [&name](const Option& known) {
            return name == "--" + std::string(known.name);
        });
        if (option == m_options.end() || (hasValue && !option->hasValue)) {
            return Failure("the option \"" + std::string(words[i]) + "\" is unknown; --help lists the options.");
        }
        // The parser takes any next word for the value; one that looks like an option tells of a forgotten value.
        if (option->hasValue && !hasValue && (++i == words.size() || words[i].starts_with("--"))) {
            return Failure(std::string(name) + " needs a value behind it; --help shows how.");
        }
    }
    return {};
}

Result<void, std::string> CommandLine::read(std::span<const std::string_view> words)
{
    // Before the parser, which says neither which word is wrong nor that a value is missing.
    const auto checked = check(words);
    QStringList texts{QString()}; // The parser passes over the program's name.
    std::transform(words.begin(), words.end(), std::back_inserter(texts), textOf);
    m_parser.parse(texts);
    return isSet(helpOption) || isSet(versionOption) ? Result<void, std::string>() : checked;
}

std::optional<int> CommandLine::readProcess(int argc, char** argv, const char* program, const char* help)
{
    const std::vector<std::string_view> words(argv + std::min(argc, 1), argv + argc);
    if (const auto done = read(words); !done) {
        return complain(program, done.error());
    }
    if (isSet(helpOption)) {
        std::fputs(help, stdout);
        return 0;
    }
    if (isSet(versionOption)) {
        std::printf("%s %s\n", program, QUILLMATE_VERSION);
        return 0;
    }
    return std::nullopt;
}

std::optional<std::string> CommandLine::value(const char* option) const
{
    return isSet(option) ? std::optional(bytesOf(m_parser.value(QLatin1String(option)))) : std::nullopt;
}

std::vector<std::string> CommandLine::words() const
{
    std::vector<std::string> words;
    const QStringList texts = m_parser.positionalArguments();
    std::transform(texts.begin(), texts.end(), std::back_inserter(words), bytesOf);
    return words;
}

int complain(const char* program, const std::string& sentence, int status)
{
    std::fprintf(stderr, "%s: %s\n", program, textFor(STDERR_FILENO, sentence).c_str());
    return status;
}

} // namespace quillmate
