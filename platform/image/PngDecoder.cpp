#include "platform/image/PngDecoder.h"

#include "platform/base/Bytes.h"
#include "platform/base/Handle.h"

#include <spng.h>

#include <algorithm>
#include <cstddef>

namespace skyflare {
namespace {

using Decoder = Handle<spng_ctx, &spng_ctx_free>;

Error pngError(int code)
{
    return {"PNG", code, spng_strerror(code)};
}

} // namespace

struct PngDecoder::State {
    Decoder decoder;
    spng_ihdr header{};
    std::uint32_t nextRow = 0;
    Bytes interlaced; ///< the whole picture, where its rows do not come one after the other

    [[nodiscard]] std::size_t rowBytes() const { return std::size_t{header.width} * 3; }

    int start()
    {
        if (header.interlace_method == SPNG_INTERLACE_NONE)
            return spng_decode_image(decoder.get(), nullptr, 0, SPNG_FMT_RGB8, SPNG_DECODE_PROGRESSIVE);
        interlaced.resize(rowBytes() * header.height);
        return spng_decode_image(decoder.get(), interlaced.data(), interlaced.size(), SPNG_FMT_RGB8, 0);
    }

    int decodeRow(std::span<std::uint8_t> rgb)
    {
        if (interlaced.empty())
            return spng_decode_row(decoder.get(), rgb.data(), rowBytes());
        const auto row = std::span(interlaced).subspan(rowBytes() * nextRow, rowBytes());
        std::copy(row.begin(), row.end(), rgb.begin());
        return nextRow + 1 == header.height ? SPNG_EOI : SPNG_OK;
    }
};

PngDecoder::PngDecoder(std::unique_ptr<State> state) : state_(std::move(state)) {}
PngDecoder::~PngDecoder() = default;

Result<std::unique_ptr<PngDecoder>> PngDecoder::open(std::span<const std::uint8_t> encoded)
{
    constexpr std::size_t mostBytesAChunk = std::size_t{32} << 20; // of those that are kept, like a profile
    auto state = std::make_unique<State>();
    state->decoder.reset(spng_ctx_new(0));
    spng_ctx *decoder = state->decoder.get();
    if (!decoder)
        return pngError(SPNG_EMEM);
    spng_set_chunk_limits(decoder, mostBytesAChunk, mostBytesAChunk);
    int code = spng_set_png_buffer(decoder, encoded.data(), encoded.size());
    if (code == SPNG_OK)
        code = spng_get_ihdr(decoder, &state->header);
    if (code == SPNG_OK)
        code = state->start();
    if (code != SPNG_OK)
        return pngError(code);
    return std::unique_ptr<PngDecoder>(new PngDecoder(std::move(state)));
}

int PngDecoder::width() const
{
    return static_cast<int>(state_->header.width);
}

int PngDecoder::height() const
{
    return static_cast<int>(state_->header.height);
}

Result<> PngDecoder::readRow(std::span<std::uint8_t> rgb)
{
    if (rgb.size() < state_->rowBytes())
        return pngError(SPNG_EBUFSIZ);
    int code = state_->decodeRow(rgb);
    ++state_->nextRow;
    if (code == SPNG_EOI && state_->nextRow == state_->header.height)
        code = spng_decode_chunks(state_->decoder.get()); // what follows the pixels, to the end
    if (code != SPNG_OK)
        return pngError(code);
    return {};
}

} // namespace skyflare
