#pragma once

#include <QString>

#include <string>

namespace quillmate::localservice
{

/// The text a person reads in a message whose source after the header block is `body`: parts and transfer encodings
/// decoded, plain text before HTML, attachments left out. Lines end in "\n". At most the first 2 MiB of a part's text
/// are read. Empty when there is no text, or none that can be read.
QString mailText(const std::string& body);

} // namespace quillmate::localservice
