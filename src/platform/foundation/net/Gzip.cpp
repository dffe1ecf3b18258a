#include "platform/foundation/net/Gzip.h"

#include <array>

#define ZLIB_CONST
#include <zlib.h>

namespace quillmate
{

std::optional<std::string> gunzip(std::string_view file, std::size_t longest)
{
    constexpr int gzipFormat = MAX_WBITS + 16; // So zlib.h wants to be told.
    z_stream stream{};
    if (inflateInit2(&stream, gzipFormat) != Z_OK) {
        return std::nullopt;
    }
    stream.next_in = reinterpret_cast<const Bytef*>(file.data());
    stream.avail_in = static_cast<uInt>(file.size());
    std::string content;
    std::array<char, 65'536> piece;
    int state = Z_OK;
    while (state == Z_OK && content.size() <= longest) {
        stream.next_out = reinterpret_cast<Bytef*>(piece.data());
        stream.avail_out = static_cast<uInt>(piece.size());
        state = inflate(&stream, Z_NO_FLUSH);
        content.append(piece.data(), piece.size() - stream.avail_out);
    }
    const bool whole = state == Z_STREAM_END && stream.avail_in == 0 && content.size() <= longest;
    inflateEnd(&stream);
    return whole ? std::optional(std::move(content)) : std::nullopt;
}

} // namespace quillmate
