#include "platform/image/PngEncoder.h"

#include "platform/image/FrameConversion.h"
#include "platform/image/PngChunk.h"

#include <system_error>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <mutex>
#include <string_view>
#include <thread>

namespace skyflare {
namespace {

constexpr std::array<std::uint8_t, 8> signature{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
constexpr std::array<std::uint8_t, 2> zlibHeader{0x78, 0x01}; // RFC 1950: deflate, 32 KiB, quickest
constexpr std::array<std::uint8_t, 2> lastBlock{0x03, 0x00};  // RFC 1951: the fixed code, nothing but its end

/// How much of the picture is compressed at a time: enough that joints cost nothing, few enough that the
/// bytes stay in the processor's cache from the filter to the checksum.
constexpr std::size_t stripBytes = std::size_t{256} << 10;

/// A chunk that holds a row must be shorter than 2 GiB.
constexpr std::size_t widestRowBytes = std::size_t{1} << 30;

/// Fewer than these are done before a thread has come up.
constexpr std::size_t stripsWorthAThread = 4;

void appendChunk(Bytes &png, std::string_view type, std::span<const std::uint8_t> data)
{
    const std::size_t start = png.size();
    png.resize(start + pngChunkFrame + data.size());
    std::uint8_t *const end = std::copy(data.begin(), data.end(), pngChunkData(png.data() + start));
    endPngChunk(png.data() + start, type, end);
}

void appendHeader(Bytes &png, const PictureRows &rows)
{
    // Width, height; depth, colours; the usual methods; in order.
    std::array<std::uint8_t, 13> header{0, 0, 0, 0, 0, 0, 0, 0, 8, 2, 0, 0, 0};
    putBigEndian(putBigEndian(header.data(), static_cast<std::uint32_t>(rows.width())),
                 static_cast<std::uint32_t>(rows.height()));
    png.insert(png.end(), signature.begin(), signature.end());
    appendChunk(png, "IHDR", header);
}

/// The encoders that nobody uses at the moment; as many are kept as stills are usually under way.
class IdleEncoders {
public:
    std::unique_ptr<PngEncoder> take()
    {
        const std::scoped_lock lock(mutex_);
        if (idle_.empty())
            return std::make_unique<PngEncoder>();
        auto encoder = std::move(idle_.back());
        idle_.pop_back();
        return encoder;
    }
    void giveBack(std::unique_ptr<PngEncoder> encoder)
    {
        const std::scoped_lock lock(mutex_);
        if (idle_.size() < mostIdle)
            idle_.push_back(std::move(encoder));
    }

private:
    static constexpr std::size_t mostIdle = 2;

    std::mutex mutex_;
    std::vector<std::unique_ptr<PngEncoder>> idle_;
};

Result<Bytes> encodeRows(const PictureRows &rows)
{
    static IdleEncoders idle;
    auto encoder = idle.take();
    Bytes png;
    const auto encoded = encoder->encode(rows, png);
    idle.giveBack(std::move(encoder));
    if (!encoded)
        return encoded.error();
    return png;
}

} // namespace

Result<> PngEncoder::encode(const PictureRows &rows, Bytes &png)
{
    if (rows.width() < 1 || rows.height() < 1)
        return Error{"PNG", 0, "the picture has no pixels"};
    if (rows.rowBytes() > widestRowBytes)
        return Error{"PNG", 0, "the picture is too wide"};
    try {
        prepare(rows);
        encodeStrips(rows);
        join(rows, png);
    } catch (const std::bad_alloc &) {
        png.clear();
        return Error{"PNG", 0, "there is no memory to encode the picture"};
    }
    return {};
}

/// All memory is got here, before there is a second thread that could fail to get it.
void PngEncoder::prepare(const PictureRows &rows)
{
    rowsAStrip_ = static_cast<int>(std::max(std::size_t{1}, stripBytes / rows.rowBytes()));
    rowsAStrip_ = std::min(rowsAStrip_, rows.height());
    chunkRoom_ = PngStripEncoder::roomFor(rows.rowBytes(), rowsAStrip_);
    strips_.assign(static_cast<std::size_t>((rows.height() - 1) / rowsAStrip_ + 1), {});
    if (chunks_.size < strips_.size() * chunkRoom_) {
        chunks_ = {};
        chunks_.bytes = std::make_unique_for_overwrite<std::uint8_t[]>(strips_.size() * chunkRoom_);
        chunks_.size = strips_.size() * chunkRoom_;
    }
    const auto threads = strips_.size() < stripsWorthAThread ? 1U : static_cast<unsigned>(threads_);
    while (encoders_.size() < threads)
        encoders_.emplace_back();
    for (unsigned i = 0; i < threads; ++i)
        encoders_[i].prepare(rows.rowBytes(), rowsAStrip_);
}

void PngEncoder::encodeStrips(const PictureRows &rows)
{
    nextStrip_ = 0;
    std::vector<std::jthread> others; // which have ended when this returns
    try {
        for (std::size_t i = 1; i < encoders_.size() && strips_.size() >= stripsWorthAThread; ++i)
            others.emplace_back([this, &rows, i] { shareStrips(rows, encoders_[i]); });
    } catch (const std::system_error &) { // no thread to be had: those that are there do it
    }
    shareStrips(rows, encoders_[0]);
}

/// Takes strips until none is left.
void PngEncoder::shareStrips(const PictureRows &rows, PngStripEncoder &encoder) noexcept
{
    for (std::size_t i = nextStrip_++; i < strips_.size(); i = nextStrip_++) {
        const int first = static_cast<int>(i) * rowsAStrip_;
        const PngStripEncoder::Rows strip{rows, first, std::min(first + rowsAStrip_, rows.height())};
        strips_[i] = encoder.encode(strip, chunks_.bytes.get() + i * chunkRoom_);
    }
}

void PngEncoder::join(const PictureRows &rows, Bytes &png) const
{
    std::size_t size = 256; // all that is not a strip
    for (const PngStripEncoder::Strip &strip : strips_)
        size += strip.chunkBytes;
    png.clear();
    png.reserve(size);
    appendHeader(png, rows);
    appendChunk(png, "IDAT", zlibHeader);
    uLong adler = 1;
    for (std::size_t i = 0; i < strips_.size(); ++i) {
        const std::uint8_t *chunk = chunks_.bytes.get() + i * chunkRoom_;
        png.insert(png.end(), chunk, chunk + strips_[i].chunkBytes);
        adler = adler32_combine(adler, strips_[i].adler, static_cast<z_off_t>(strips_[i].filteredBytes));
    }
    std::array<std::uint8_t, 6> trailer{lastBlock[0], lastBlock[1]};
    putBigEndian(trailer.data() + lastBlock.size(), static_cast<std::uint32_t>(adler));
    appendChunk(png, "IDAT", trailer);
    appendChunk(png, "IEND", {});
}

Result<Bytes> encodePng(const PixelBuffer &pixels)
{
    if (pixels.width > 0 && pixels.height > 0 &&
        pixels.rgb.size() != pixels.rowBytes() * static_cast<std::size_t>(pixels.height))
        return Error{"PNG", 0, "the picture has no pixels"};
    return encodeRows(PixelRows(pixels));
}

Result<Bytes> encodePng(const VideoFrame &frame)
{
    if (frame.format == PixelFormat::Jpeg) {
        const auto pixels = convertToRgb(frame);
        return pixels ? encodePng(*pixels) : pixels.error();
    }
    const auto rows = FrameRows::of(frame);
    return rows ? encodeRows(*rows) : rows.error();
}

} // namespace skyflare
