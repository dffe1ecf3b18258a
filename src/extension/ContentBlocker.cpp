#include "extension/ContentBlocker.h"

#include "platform/foundation/Bundle.h"

namespace quillmate
{

std::string ContentBlocker::contentRulesJSON()
{
    return Bundle::main().contents("ContentBlockerRules", "json").value_or("");
}

} // namespace quillmate
