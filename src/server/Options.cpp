#include "server/Options.h"

#include <QCommandLineParser>
#include <QString>
#include <QUrl>

#include <algorithm>
#include <charconv>
#include <functional>
#include <vector>

namespace quillmate::server
{

namespace
{

/// Why a value cannot be taken: what it must be.
using Checked = Result<void, std::string>;
using Setter = std::function<Checked(Options&, const std::string&)>;

Checked setAddress(Options& options, const std::string& value)
{
    options.listenAddress.setAddress(QString::fromStdString(value == "localhost" ? "127.0.0.1" : value));
    return options.listenAddress.isNull() ? Failure("give an IP address, such as 127.0.0.1 or ::1") : Checked();
}

bool readNumber(const std::string& value, unsigned& number)
{
    const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), number);
    return error == std::errc() && end == value.data() + value.size();
}

Checked setPort(Options& options, const std::string& value)
{
    constexpr unsigned largest = 65535;
    if (!readNumber(value, options.port) || options.port > largest) {
        return Failure("give a number from 0 (any free port) to 65535");
    }
    return {};
}

Checked setData(Options& options, const std::string& value)
{
    options.dataFolder = value;
    return value.empty() ? Failure("give a folder") : Checked();
}

Checked setEngine(Options& options, const std::string& value)
{
    options.engine = value == "openai" ? Options::Engine::OpenAi : Options::Engine::Builtin;
    return value != "builtin" && value != "openai" ? Failure("give builtin or openai") : Checked();
}

Checked setModel(Options& options, const std::string& value)
{
    options.openAiModel = value;
    return value.empty() ? Failure("give a model's name") : Checked();
}

Checked setOpenAiUrl(Options& options, const std::string& value)
{
    const auto read = readModelAddress(value);
    if (!read) {
        return Failure(read.error());
    }
    options.openAiAddress = read.value();
    return {};
}

Checked setContext(Options& options, const std::string& value)
{
    constexpr unsigned smallest = 1024;
    constexpr unsigned largest = 100'000'000;
    if (!readNumber(value, options.openAiContext) || options.openAiContext < smallest ||
        options.openAiContext > largest) {
        return Failure("give a number of tokens from 1024 to 100000000");
    }
    return {};
}

Checked setUpdateVersion(Options& options, const std::string& value)
{
    options.update.version = value;
    return isVersion(value) ? Checked() : Failure("give a version, such as 1.2.0 or 1.2.0-rc.1");
}

Checked setUpdateUrl(Options& options, const std::string& value)
{
    options.update.url = value;
    return isWebUrl(QUrl(QString::fromStdString(value), QUrl::StrictMode)) ? Checked()
                                                                           : Failure("give a whole https or http URL");
}

/// What was given, as it can stand in one line: without what may be secret in a URL, its user, query and fragment. A
/// password may hold any of the characters that end a URL's parts, so the user goes first, up to the last "@".
std::string shown(std::string argument)
{
    constexpr std::size_t longest = 100;
    const std::size_t user = argument.rfind('@');
    if (user != std::string::npos) {
        std::size_t begin = 0;
        for (const std::string_view scheme : {"http://", "https://"}) {
            begin = argument.compare(0, scheme.size(), scheme) == 0 ? scheme.size() : begin;
        }
        argument.replace(begin, user - begin, "...");
    }
    const std::size_t rest = argument.find_first_of("?#");
    if (rest != std::string::npos) {
        argument.replace(rest + 1, std::string::npos, "...");
    }
    std::string text = argument.substr(0, longest);
    std::replace_if(
        text.begin(), text.end(), [](char c) { return (c >= 0 && c < 0x20) || c == 0x7F; }, '?');
    return argument.size() > longest ? text + "..." : text;
}

struct Option {
    const char* name;
    const char* valueName;
    const char* description;
    Setter set;
};

const std::vector<Option>& valueOptions()
{
    static const std::vector<Option> table = {
        {"listen", "ADDRESS", "IP address to listen on (127.0.0.1)", setAddress},
        {"port", "N", "port to listen on; 0 takes any free one (8443)", setPort},
        {"data", "DIR", "folder for certificates and data (${XDG_DATA_HOME:-~/.local/share}/quillmate/service)",
         setData},
        {"engine", "NAME",
         "who writes: builtin, without a language model, or openai, a model behind an OpenAI-compatible service such "
         "as llama.cpp, Ollama or vLLM (builtin)",
         setEngine},
        {"openai-url", "URL", "that service, such as http://127.0.0.1:8080/v1", setOpenAiUrl},
        {"openai-model", "NAME", "the model, by the name that the service has for it", setModel},
        {"openai-context", "N",
         "how many tokens the model reads and writes at once; what does not fit is left out (the service is asked, or "
         "else 4096)",
         setContext},
        {"update-version", "V", "newest version that the version check offers", setUpdateVersion},
        {"update-url", "URL", "where that version can be had", setUpdateUrl}};
    return table;
}

void describeOptions(QCommandLineParser& parser)
{
    // One dash before a whole word means what two do, and not an option for each letter.
    parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    parser.setApplicationDescription(QStringLiteral(
        "An assistant service on this machine for the Quillmate panel.\n\nClients must trust DIR/ca.pem. A key for the "
        "language model's service is taken\nfrom the environment: QUILLMATE_OPENAI_API_KEY. With openai, the messages "
        "that\nthe panel shows are sent to that service."));
    for (const Option& option : valueOptions()) {
        parser.addOption({QString::fromLatin1(option.name), QString::fromLatin1(option.description),
                          QString::fromLatin1(option.valueName)});
    }
    parser.addOption({{QStringLiteral("help"), QStringLiteral("h")}, QStringLiteral("show this text")});
    parser.addOption({QStringLiteral("version"), QStringLiteral("show the version")});
}

/// What is wrong with the options together.
Checked contradiction(const Options& options)
{
    if (options.update.version.empty() != options.update.url.empty()) {
        return Failure("--update-version and --update-url go together: give both or neither");
    }
    if (options.engine == Options::Engine::OpenAi && (!options.openAiAddress || options.openAiModel.empty())) {
        return Failure("--engine openai needs --openai-url and --openai-model: give both, for example --openai-url "
                       "http://127.0.0.1:8080/v1 --openai-model default");
    }
    const bool named = options.openAiAddress || !options.openAiModel.empty() || options.openAiContext > 0;
    if (options.engine == Options::Engine::Builtin && named) {
        return Failure(
            "--openai-url, --openai-model and --openai-context are for --engine openai: give that too, or leave "
            "them out");
    }
    return {};
}

} // namespace

Result<Options, std::string> readOptions(const QStringList& arguments, const std::string& defaultData)
{
    const std::string help = " See quillmate-service --help.";
    QCommandLineParser parser;
    describeOptions(parser);
    if (!parser.parse(arguments)) {
        return Failure(shown(parser.errorText().toStdString()) + help);
    }
    if (!parser.positionalArguments().isEmpty()) {
        return Failure("Unknown argument '" + shown(parser.positionalArguments().first().toStdString()) + "'." + help);
    }
    Options options;
    options.dataFolder = defaultData;
    options.help = parser.isSet(QStringLiteral("help"));
    options.version = parser.isSet(QStringLiteral("version"));
    for (const Option& option : valueOptions()) {
        const QString name = QString::fromLatin1(option.name);
        if (!parser.isSet(name)) {
            continue;
        }
        const std::string value = parser.value(name).toStdString();
        if (const Checked set = option.set(options, value); !set) {
            return Failure("--" + std::string(option.name) + " cannot be \"" + shown(value) + "\": " + set.error());
        }
    }
    if (const Checked together = contradiction(options); !together && !options.help && !options.version) {
        return Failure(together.error());
    }
    return options;
}

std::string usageText()
{
    QCommandLineParser parser;
    describeOptions(parser);
    // The parser begins with the program's whole path.
    const std::string text = parser.helpText().toStdString();
    return "Usage: quillmate-service [options]" + text.substr(std::min(text.find('\n'), text.size()));
}

} // namespace quillmate::server
