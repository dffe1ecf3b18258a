#include "support/TestProgram.h"

#include <cstdio>
#include <map>
#include <string>

namespace quillmate
{
namespace
{

std::map<std::string, TestEntry::Run>& entries()
{
    static std::map<std::string, TestEntry::Run> all;
    return all;
}

} // namespace

TestEntry::TestEntry(const char* name, Run run)
{
    entries().emplace(name, run);
}

} // namespace quillmate

#ifdef __SANITIZE_ADDRESS__
/// glibc's resolver keeps 28 bytes for each thread that looks a name up, and Qt's threads for that may still live when
/// the process ends.
extern "C" const char* __lsan_default_suppressions(); // NOLINT(bugprone-reserved-identifier): the sanitizer's name
extern "C" const char* __lsan_default_suppressions()  // NOLINT(bugprone-reserved-identifier)
{
    return "leak:__res_context_send\n";
}
#endif

/// PROGRAM TEST [ARGUMENT OF QT TEST…]: one class in a process, so that nothing of one is left for the next.
int main(int argc, char** argv)
{
    const auto found = argc > 1 ? quillmate::entries().find(argv[1]) : quillmate::entries().end();
    if (found == quillmate::entries().end()) {
        std::fputs("name one of these tests first:\n", stderr);
        for (const auto& [name, run] : quillmate::entries()) {
            std::fprintf(stderr, "  %s\n", name.c_str());
        }
        return 2;
    }
    argv[1] = argv[0];
    return found->second(argc - 1, argv + 1);
}
