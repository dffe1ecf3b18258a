#pragma once

#include "base/Result.h"
#include "server/UpdateOffer.h"
#include "server/model/ModelAddress.h"

#include <QHostAddress>
#include <QStringList>

#include <optional>
#include <string>

namespace quillmate::server
{

/// What the command line asks for.
struct Options {
    enum class Engine { Builtin, OpenAi };

    QHostAddress listenAddress = QHostAddress(QHostAddress::LocalHost);
    unsigned port = 8443;
    std::string dataFolder;
    Engine engine = Engine::Builtin;
    std::optional<ModelAddress> openAiAddress;
    std::string openAiModel;
    unsigned openAiContext = 0; ///< tokens; 0: the server is asked
    UpdateOffer update;
    bool help = false;
    bool version = false;
};

/// Reads the arguments, of which the first is the program, as "--name value" or "--name=value". The failure is one
/// sentence that names the argument and says what to do. `defaultData` is the folder where none is given.
Result<Options, std::string> readOptions(const QStringList& arguments, const std::string& defaultData);

/// The text of --help.
std::string usageText();

} // namespace quillmate::server
