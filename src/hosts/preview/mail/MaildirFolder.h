#pragma once

#include "base/Result.h"
#include "hosts/preview/mail/MailFailure.h"

#include <string>
#include <vector>

namespace quillmate
{

[[nodiscard]] bool isFolder(const std::string& path);

/// The message files of a Maildir, those in "new" first, each folder in the order of the names. A folder without "cur"
/// and "new" is no Maildir and gives a failure.
Result<std::vector<std::string>, MailFailure> maildirFiles(const std::string& path);

} // namespace quillmate
