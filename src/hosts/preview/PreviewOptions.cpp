#include "hosts/preview/PreviewOptions.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace quillmate
{
namespace
{

std::optional<int> positiveNumber(std::string_view text)
{
    int number = 0;
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isNumber = failure == std::errc() && end == text.data() + text.size() && number > 0;
    return isNumber ? std::optional(number) : std::nullopt;
}

std::string inQuotes(std::string_view text)
{
    return "\"" + std::string(text) + "\"";
}

constexpr auto replyOption = "reply";
constexpr auto newOption = "new";
constexpr auto serviceOption = "service";
constexpr auto screenshotOption = "screenshot";

Result<void, std::string> check(const PreviewOptions& options)
{
    if (options.screenshotFile == "") {
        return Failure("--screenshot needs the name of the PNG file to write.");
    }
    if (options.reply && options.newMessage) {
        return Failure("--reply and --new cannot both open the compose window: give one of them.");
    }
    if (options.reply && options.messages.empty()) {
        return checkReply(*options.reply, 0);
    }
    if (std::find(options.messages.begin(), options.messages.end(), "") != options.messages.end()) {
        return Failure("the name of a message is empty: name an .eml file, an mbox or a Maildir.");
    }
    return {};
}

} // namespace

std::span<const CommandLine::Option> previewOptions()
{
    static constexpr std::array<CommandLine::Option, 4> options{
        {{replyOption, true}, {newOption}, {serviceOption, true}, {screenshotOption, true}}};
    return options;
}

Result<PreviewOptions, std::string> PreviewOptions::from(const CommandLine& line)
{
    PreviewOptions options;
    if (const auto service = line.value(serviceOption)) {
        options.service = serviceChoiceNamed(*service);
        if (!options.service) {
            return Failure("--service " + inQuotes(*service) + " is unknown: give local or remote.");
        }
    }
    if (const auto reply = line.value(replyOption)) {
        options.reply = positiveNumber(*reply);
        if (!options.reply) {
            return Failure("--reply " + inQuotes(*reply) +
                           " is no message number: give 1 for the first message, 2 for the second.");
        }
    }
    options.newMessage = line.isSet(newOption);
    options.screenshotFile = line.value(screenshotOption);
    options.messages = line.words();
    if (const auto checked = check(options); !checked) {
        return Failure(checked.error());
    }
    return options;
}

Result<void, std::string> checkReply(int reply, std::size_t count)
{
    if (count == 0) {
        return Failure("--reply needs a message to reply to: name an .eml file, an mbox or a Maildir.");
    }
    if (static_cast<std::size_t>(reply) <= count) {
        return {};
    }
    const std::string asked = "--reply " + std::to_string(reply) + " asks for more than the ";
    return Failure(count == 1 ? asked + "one message there is: give 1."
                              : asked + std::to_string(count) + " messages there are: give a number from 1 to " +
                                    std::to_string(count) + ".");
}

const char* previewHelp()
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
