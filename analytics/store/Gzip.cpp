#include "analytics/store/Gzip.h"

#include "platform/base/Handle.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <limits>

namespace skyflare {

namespace {

constexpr int gzipWindow = 15 + 16; // the largest window; 16 asks for gzip's frame
constexpr int usualMemory = 8;
constexpr std::size_t mostAtOnce = std::numeric_limits<uInt>::max();

} // namespace

Result<Bytes> gzip(std::span<const std::uint8_t> bytes)
{
    Error failed{"zlib", 0, "Failed to compress bundle"};
    z_stream stream{};
    if (bytes.size() > mostAtOnce / 2 ||
        deflateInit2(&stream, Z_BEST_SPEED, Z_DEFLATED, gzipWindow, usualMemory, Z_DEFAULT_STRATEGY) != Z_OK)
        return failed;
    const Handle<z_stream, &deflateEnd> end(&stream);
    Bytes result(deflateBound(&stream, bytes.size()));
    stream.next_in = const_cast<Bytef *>(bytes.data());
    stream.avail_in = static_cast<uInt>(bytes.size());
    stream.next_out = result.data();
    stream.avail_out = static_cast<uInt>(result.size());
    if (deflate(&stream, Z_FINISH) != Z_STREAM_END)
        return failed;
    result.resize(stream.total_out);
    return result;
}

Result<Bytes> gunzip(std::span<const std::uint8_t> bytes, std::size_t most)
{
    z_stream stream{};
    if (bytes.size() > mostAtOnce || inflateInit2(&stream, gzipWindow) != Z_OK)
        return Error{"zlib", 0, "Unable to decompress bundle data"};
    const Handle<z_stream, &inflateEnd> end(&stream);
    stream.next_in = const_cast<Bytef *>(bytes.data());
    stream.avail_in = static_cast<uInt>(bytes.size());
    Bytes result;
    std::array<Bytef, 16384> part{};
    for (;;) {
        stream.next_out = part.data();
        stream.avail_out = part.size();
        const int code = inflate(&stream, Z_NO_FLUSH);
        const std::size_t made = part.size() - stream.avail_out;
        if ((code != Z_OK && code != Z_STREAM_END) || result.size() + made > most)
            return Error{"zlib", code, "Unable to decompress bundle data"};
        result.insert(result.end(), part.begin(), part.begin() + static_cast<std::ptrdiff_t>(made));
        if (code == Z_STREAM_END)
            return result;
    }
}

} // namespace skyflare
