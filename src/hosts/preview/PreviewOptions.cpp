#include "hosts/preview/PreviewOptions.h"

#include <algorithm>
#include <charconv>

namespace quillmate
{
namespace
{

using Parsing = Result<PreviewOptions, std::string>;

std::optional<int> positiveNumber(std::string_view text)
{
    int number = 0;
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isNumber = failure == std::errc() && end == text.data() + text.size() && number > 0;
    return isNumber ? std::optional(number) : std::nullopt;
}

std::string quoted(std::string_view text)
{
    return "\"" + std::string(text) + "\"";
}

/// Sets an option that has a value; the result is what is wrong with it, empty when nothing is.
std::string setValue(PreviewOptions& options, std::string_view name, std::string_view value)
{
    if (name == "--service") {
        if (value != "local" && value != "remote") {
            return "--service " + quoted(value) + " is unknown: give local or remote.";
        }
        options.service = value == "local" ? PreviewOptions::Service::Local : PreviewOptions::Service::Remote;
    } else if (name == "--reply") {
        options.reply = positiveNumber(value);
        if (!options.reply) {
            return "--reply " + quoted(value) +
                   " is no message number: give 1 for the first message, 2 for the second.";
        }
    } else {
        if (value.empty()) {
            return "--screenshot needs the name of the PNG file to write.";
        }
        options.screenshotFile = std::string(value);
    }
    return {};
}

bool takesValue(std::string_view name)
{
    return name == "--service" || name == "--reply" || name == "--screenshot";
}

/// Whether the next word is this option's value; one that looks like an option is taken for a forgotten value.
bool isValue(std::string_view word)
{
    return !word.starts_with("--");
}

std::string contradiction(const PreviewOptions& options)
{
    if (options.reply && options.newMessage) {
        return "--reply and --new cannot both open the compose window: give one of them.";
    }
    if (options.reply && options.messages.empty()) {
        return replyRefusal(*options.reply, 0);
    }
    if (std::find(options.messages.begin(), options.messages.end(), "") != options.messages.end()) {
        return "the name of a message is empty: name an .eml file, an mbox or a Maildir.";
    }
    return {};
}

} // namespace

Parsing PreviewOptions::parse(std::span<const std::string_view> arguments)
{
    PreviewOptions options;
    bool onlyMessages = false;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string_view argument = arguments[i];
        if (onlyMessages || argument == "-" || !argument.starts_with('-')) {
            options.messages.emplace_back(argument);
            continue;
        }
        const std::size_t equals = argument.find('=');
        const std::string_view name = argument.substr(0, equals);
        if (argument == "--") {
            onlyMessages = true;
        } else if (argument == "--help" || argument == "--version") {
            options.task = argument == "--help" ? Task::Help : Task::Version;
            return options;
        } else if (argument == "--new") {
            options.newMessage = true;
        } else if (takesValue(name)) {
            const bool hasValue = equals != std::string_view::npos;
            if (!hasValue && (i + 1 == arguments.size() || !isValue(arguments[i + 1]))) {
                return Parsing::failure(std::string(name) + " needs a value behind it; --help shows how.");
            }
            const std::string_view value = hasValue ? argument.substr(equals + 1) : arguments[++i];
            if (std::string problem = setValue(options, name, value); !problem.empty()) {
                return Parsing::failure(std::move(problem));
            }
        } else {
            return Parsing::failure("the option " + quoted(argument) + " is unknown; --help lists the options.");
        }
    }
    if (std::string problem = contradiction(options); !problem.empty()) {
        return Parsing::failure(std::move(problem));
    }
    return options;
}

std::string replyRefusal(int reply, std::size_t count)
{
    if (count == 0) {
        return "--reply needs a message to reply to: name an .eml file, an mbox or a Maildir.";
    }
    if (static_cast<std::size_t>(reply) <= count) {
        return {};
    }
    const std::string asked = "--reply " + std::to_string(reply) + " asks for more than the ";
    return count == 1 ? asked + "one message there is: give 1."
                      : asked + std::to_string(count) + " messages there are: give a number from 1 to " +
                            std::to_string(count) + ".";
}

std::string_view previewHelp()
{
    return R"(Usage: quillmate [OPTIONS] [MESSAGE...]

Shows mail messages, and compose windows with the Quillmate panel beside them.
It is a preview of a mail application: it sends no mail and changes no message.

MESSAGE is an .eml file, an mbox file or a Maildir; - reads one message from
standard input. With exactly one message, the reply to it opens at once.

Options:
  --reply N             open the reply to the N-th message at once
  --new                 open a new message at once
  --service local       start an assistant service on this machine and use no
                        other, whatever QUILLMATE_CONNECT_TO says
  --service remote      use the assistant service that this build was made for
  --screenshot FILE     write the window as a PNG file and end; needs no display
  --help                show this help
  --version             show the version

Without --service an assistant service is started on this machine for the
service hosts that QUILLMATE_CONNECT_TO does not name.

Environment:
  QUILLMATE_CONNECT_TO  HOST=ADDRESS:PORT[,...]: connect there in HOST's place
  QUILLMATE_CA_FILE     a PEM file with further roots to trust
)";
}

} // namespace quillmate
