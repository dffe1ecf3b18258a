#include "hosts/preview/mail/MaildirFolder.h"

#include "hosts/preview/mail/InputFile.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <system_error>

namespace quillmate
{
namespace
{

namespace files = std::filesystem;
using Names = Result<std::vector<std::string>, MailFailure>;

Names filesIn(const files::path& folder)
{
    std::vector<std::string> names;
    std::error_code failure;
    for (files::directory_iterator entry(folder, failure), end; !failure && entry != end; entry.increment(failure)) {
        std::error_code ignored; // A file that vanishes meanwhile is no message any more.
        const bool isHidden = entry->path().filename().native().starts_with('.');
        if (!isHidden && entry->is_regular_file(ignored)) {
            names.push_back(entry->path().native());
        }
    }
    if (failure) {
        return Names::failure(systemFailure(folder.native(), failure.value()));
    }
    std::sort(names.begin(), names.end());
    return names;
}

} // namespace

bool isFolder(const std::string& path)
{
    std::error_code ignored; // What cannot be asked about is opened as a file, and the opening says what is wrong.
    return files::is_directory(path, ignored);
}

Names maildirFiles(const std::string& path)
{
    std::vector<std::string> names;
    bool isMaildir = false;
    for (const char* part : {"new", "cur"}) {
        const files::path folder = files::path(path) / part;
        if (!isFolder(folder.native())) {
            continue;
        }
        isMaildir = true;
        Names found = filesIn(folder);
        if (!found) {
            return found;
        }
        std::copy(found.value().begin(), found.value().end(), std::back_inserter(names));
    }
    if (!isMaildir) {
        return Names::failure(
            {MailFailure::Kind::NotMail, path + " is a folder but no Maildir (it has neither \"cur\" nor "
                                                "\"new\"): name a Maildir, an mbox or an .eml file."});
    }
    return names;
}

} // namespace quillmate
