#include "extension/ExtractBody.h"
#include "stopwatch.h"

#include <cstdio>
#include <cstring>
#include <string>

/// The body rule against one memchr over the same bytes, for a byte that is not there.
int main()
{
    volatile std::size_t sink = 0;
    const auto measure = [&](const char* name, const std::string& text, std::size_t size) {
        std::string source = "From: a@b.example\nSubject: x\n\n";
        while (source.size() < size) {
            source += text;
        }
        const int repeats = static_cast<int>(std::max<std::size_t>(1, 50'000'000 / size));
        const double scan = quillmate::secondsFor(9, [&] {
            for (int i = 0; i < repeats; ++i) {
                sink = sink + (std::memchr(source.data(), '\x01', source.size()) != nullptr ? 1U : 0U);
            }
        });
        const double extract = quillmate::secondsFor(9, [&] {
            for (int i = 0; i < repeats; ++i) {
                sink = sink + quillmate::extractBody(source)->size();
            }
        });
        const double gigabytes = static_cast<double>(source.size()) * repeats / 1e9;
        std::printf("extraction %-9s %9zu bytes: %5.1f GB/s, memchr %5.1f GB/s, ratio %.2f\n", name, source.size(),
                    gigabytes / extract, gigabytes / scan, scan / extract);
    };
    for (const std::size_t size : {std::size_t(1'000), std::size_t(100'000), std::size_t(25'000'000)}) {
        measure("ASCII", "The quick brown fox jumps over the lazy dog, again and again.\n", size);
        measure("Japanese", "いろはにほへと ちりぬるを わかよたれそ つねならむ\n", size);
    }
    return 0;
}
