#include "platform/image/PlainPngDecoder.h"

#include "platform/base/Bytes.h"
#include "platform/image/PngChunk.h"
#include "platform/image/PngUnfilter.h"

#include <isa-l/crc.h>
#include <isa-l/igzip_lib.h>

#include <algorithm>
#include <array>
#include <limits>
#include <optional>
#include <string_view>
#include <vector>

namespace skyflare {
namespace {

using Span = std::span<const std::uint8_t>;

constexpr std::array<std::uint8_t, 8> signature{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
constexpr std::size_t headerBytes = 13;
constexpr std::size_t checksumBytes = 4;
/// Filtered rows that are inflated in one go: what a processor keeps near, and no fewer than one row.
constexpr std::size_t roomBytes = std::size_t{128} << 10;

Error damage(int code, const char *message)
{
    return {"PNG", code, message};
}

std::uint32_t bigEndian(Span bytes)
{
    return std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 | std::uint32_t{bytes[2]} << 8 |
           std::uint32_t{bytes[3]};
}

struct Chunk {
    std::string_view type;
    Span data;
};

/// Takes the first chunk off `rest`; nothing where there is no whole one with the right checksum.
std::optional<Chunk> takeChunk(Span &rest)
{
    if (rest.size() < pngChunkFrame)
        return {};
    const std::size_t size = bigEndian(rest);
    if (size > rest.size() - pngChunkFrame)
        return {};
    const Span checked = rest.subspan(4, 4 + size);
    if (crc32_gzip_refl(0, checked.data(), checked.size()) != bigEndian(rest.subspan(8 + size)))
        return {};
    rest = rest.subspan(pngChunkFrame + size);
    return Chunk{{reinterpret_cast<const char *>(checked.data()), 4}, checked.subspan(4)};
}

/// A chunk that may be passed over (ISO/IEC 15948, 5.4).
bool isAncillary(std::string_view type)
{
    return (type.front() & 0x20) != 0;
}

struct Plain {
    int width = 0;
    int height = 0;
    std::vector<Span> data; ///< of the IDAT chunks
};

std::optional<Plain> readHeader(const Chunk &chunk)
{
    constexpr std::array<std::uint8_t, 5> rgb8{8, 2, 0, 0, 0}; // depth, colours, the usual methods, in order
    if (chunk.type != "IHDR" || chunk.data.size() != headerBytes ||
        !std::ranges::equal(chunk.data.subspan(8), rgb8))
        return {};
    constexpr auto most = static_cast<std::uint32_t>(std::numeric_limits<int>::max() / 4);
    const std::uint32_t width = bigEndian(chunk.data);
    const std::uint32_t height = bigEndian(chunk.data.subspan(4));
    if (width == 0 || height == 0 || width > most || height > most)
        return {};
    return Plain{static_cast<int>(width), static_cast<int>(height), {}};
}

/// Goes through the whole file.
std::optional<Plain> readChunks(Span encoded)
{
    if (encoded.size() < signature.size() || !std::ranges::equal(encoded.first(signature.size()), signature))
        return {};
    Span rest = encoded.subspan(signature.size());
    auto chunk = takeChunk(rest);
    auto plain = chunk ? readHeader(*chunk) : std::nullopt;
    bool isAfterData = false;
    while (plain && (chunk = takeChunk(rest))) {
        if (chunk->type == "IEND")
            return plain->data.empty() ? std::nullopt : plain;
        if (chunk->type == "IDAT" && !isAfterData)
            plain->data.push_back(chunk->data);
        else if (isAncillary(chunk->type))
            isAfterData = !plain->data.empty();
        else
            return {};
    }
    return {};
}

} // namespace

struct PlainPngDecoder::State {
    Plain plain;
    inflate_state inflater{};
    std::size_t nextData = 0;
    Bytes room;
    Span filtered; ///< what of it has not been read yet
    Bytes above;
    int rowsRead = 0;
    std::optional<Error> failed;

    explicit State(Plain header) : plain(std::move(header)), above(rowBytes())
    {
        isal_inflate_init(&inflater);
        inflater.crc_flag = ISAL_ZLIB;
        room.resize(std::max(std::size_t{1}, roomBytes / (rowBytes() + 1)) * (rowBytes() + 1));
    }
    [[nodiscard]] std::size_t rowBytes() const { return static_cast<std::size_t>(plain.width) * 3; }

    /// Feeds what is left of the data until `into` is full or the stream has ended.
    Result<std::size_t> inflate(std::span<std::uint8_t> into)
    {
        inflater.next_out = into.data();
        inflater.avail_out = static_cast<std::uint32_t>(into.size());
        while (inflater.block_state != ISAL_BLOCK_FINISH) {
            if (inflater.avail_in == 0 && nextData < plain.data.size()) {
                const Span data = plain.data[nextData++];
                inflater.next_in = const_cast<std::uint8_t *>(data.data()); // which is only read
                inflater.avail_in = static_cast<std::uint32_t>(data.size());
            }
            const auto outBefore = inflater.avail_out;
            const auto inBefore = inflater.avail_in;
            const int code = isal_inflate(&inflater);
            if (code != ISAL_DECOMP_OK && code != ISAL_END_INPUT)
                return damage(code, "the compressed data is damaged");
            if (inflater.avail_out == 0)
                break;
            if (inflater.avail_out == outBefore && inflater.avail_in == inBefore &&
                nextData == plain.data.size())
                break; // the data is cut short
        }
        return into.size() - inflater.avail_out;
    }

    Result<Span> nextFiltered()
    {
        if (filtered.empty()) {
            const std::size_t left = static_cast<std::size_t>(plain.height - rowsRead) * (rowBytes() + 1);
            const auto got = inflate(std::span(room).first(std::min(room.size(), left)));
            if (!got)
                return got.error();
            filtered = Span(room).first(*got);
        }
        if (filtered.size() < rowBytes() + 1)
            return damage(0, "the picture's data is cut short");
        const Span row = filtered.first(rowBytes() + 1);
        filtered = filtered.subspan(row.size());
        return row;
    }

    /// Behind the last row there is the end of the stream, with its checksum.
    Result<> checkEnd()
    {
        std::array<std::uint8_t, 1> more{};
        const auto got = inflate(more);
        if (!got)
            return got.error();
        if (inflater.block_state != ISAL_BLOCK_FINISH)
            return damage(0, *got > 0 ? "there is more data than pixels" : "the picture's data is cut short");
        return {};
    }
};

PlainPngDecoder::PlainPngDecoder(std::unique_ptr<State> state) : state_(std::move(state)) {}
PlainPngDecoder::~PlainPngDecoder() = default;

std::unique_ptr<PlainPngDecoder> PlainPngDecoder::open(std::span<const std::uint8_t> encoded)
{
    auto plain = readChunks(encoded);
    if (!plain)
        return nullptr;
    return std::unique_ptr<PlainPngDecoder>(new PlainPngDecoder(std::make_unique<State>(*std::move(plain))));
}

int PlainPngDecoder::width() const
{
    return state_->plain.width;
}

int PlainPngDecoder::height() const
{
    return state_->plain.height;
}

Result<> PlainPngDecoder::readRow(std::span<std::uint8_t> rgb)
{
    State &state = *state_;
    if (rgb.size() < state.rowBytes() || state.rowsRead == state.plain.height)
        return damage(0, "there is no such row");
    if (state.failed)
        return *state.failed;
    const auto fail = [&state](Error error) {
        state.failed = error;
        return error;
    };
    const auto filtered = state.nextFiltered();
    if (!filtered)
        return fail(filtered.error());
    const auto row = rgb.first(state.rowBytes());
    if (!unfilterRow(*filtered, state.above, row))
        return fail(damage(0, "a row has an unknown filter"));
    std::ranges::copy(row, state.above.begin());
    if (++state.rowsRead < state.plain.height)
        return {};
    const auto ended = state.checkEnd();
    return ended ? Result<>() : fail(ended.error());
}

} // namespace skyflare
