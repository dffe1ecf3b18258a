#include "platform/foundation/settings/UserDefaults.h"

#include <cstdio>
#include <cstdlib>
#include <string>

/// Writes numbered values into the settings file that is named first, from the number that is named second, and says
/// each number once its write has returned. Runs until it is killed, or until the number that may be named third.
int main(int argc, char** argv)
{
    if (argc < 3) {
        return 2;
    }
    quillmate::UserDefaults defaults(argv[1]);
    const long last = argc > 3 ? std::atol(argv[3]) : -1;
    for (long i = std::atol(argv[2]); last < 0 || i <= last; ++i) {
        defaults.setString("key " + std::to_string(i % 50), std::to_string(i) + std::string(2000, 'x'));
        std::printf("%ld\n", i);
        std::fflush(stdout);
    }
    return 0;
}
