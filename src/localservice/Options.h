#pragma once

#include "localservice/UpdateOffer.h"

#include <string>
#include <variant>
#include <vector>

namespace quillmate::localservice
{

/// What the command line asks for.
struct Options {
    enum class Engine { Builtin, OpenAi };

    std::string listenAddress = "127.0.0.1";
    unsigned port = 8443;
    std::string dataFolder;
    Engine engine = Engine::Builtin;
    std::string openAiUrl;
    std::string openAiModel;
    unsigned openAiContext = 0; ///< tokens; 0: the server is asked
    UpdateOffer update;
    bool help = false;
    bool version = false;
};

/// Reads the arguments after the program's name, as "--name value" or "--name=value". The failure is one sentence that
/// names the argument and says what to do. `defaultData` is the folder where none is given.
std::variant<Options, std::string> readOptions(const std::vector<std::string>& arguments,
                                               const std::string& defaultData);

/// ${XDG_DATA_HOME:-~/.local/share}/quillmate/service; a relative XDG_DATA_HOME counts as unset, as the XDG Base
/// Directory rules want it.
std::string defaultDataFolder();

/// The text of --help.
std::string usageText();

} // namespace quillmate::localservice
