#include "platform/image/PngStripEncoder.h"

#include "platform/image/PngChunk.h"

#include <isa-l/crc.h>
#include <isa-l/igzip_lib.h>
#include <zlib.h>

#include <algorithm>
#include <cstring>

namespace skyflare {
namespace {

enum Filter : std::uint8_t { upFilter = 2, averageFilter = 3 };
constexpr std::size_t pixelBytes = 3;

/// Each byte less the one above.
void lessUp(const std::uint8_t *row, const std::uint8_t *above, std::size_t rowBytes, std::uint8_t *into)
{
    for (std::size_t i = 0; i < rowBytes; ++i)
        into[i] = static_cast<std::uint8_t>(row[i] - above[i]);
}

/// Each byte less the mean of the one left of it and the one above, rounded down.
void lessAverage(const std::uint8_t *row, const std::uint8_t *above, std::size_t rowBytes, std::uint8_t *into)
{
    for (std::size_t i = 0; i < pixelBytes; ++i)
        into[i] = static_cast<std::uint8_t>(row[i] - above[i] / 2);
    const std::uint8_t *left = row;
    const std::uint8_t *current = row + pixelBytes;
    const std::uint8_t *up = above + pixelBytes;
    std::uint8_t *out = into + pixelBytes;
    for (std::size_t i = 0; i < rowBytes - pixelBytes; ++i)
        out[i] = static_cast<std::uint8_t>(current[i] - ((left[i] + up[i]) >> 1));
}

/// What a quarter of a strip's bytes is like: a thousand bytes of every four thousand.
class Sample {
public:
    Sample(std::span<const std::uint8_t> filtered, std::size_t rowBytes)
    {
        constexpr std::size_t piece = 1024;
        const std::size_t before = rowBytes + 1; // a row with its filter's number
        for (std::size_t start = 0; start < filtered.size(); start += 4 * piece) {
            const auto bytes = filtered.subspan(start, std::min(piece, filtered.size() - start));
            count(bytes);
            for (std::size_t i = start; i + 8 <= start + bytes.size(); i += 16) {
                ++looked_;
                repeated_ += (i >= pixelBytes && isSame(filtered, i, i - pixelBytes)) ||
                             (i >= before && isSame(filtered, i, i - before));
            }
        }
        for (const LiteralCode::Counts &lane : lanes_)
            for (std::size_t i = 0; i < counts_.size(); ++i)
                counts_[i] += lane[i];
    }

    [[nodiscard]] const LiteralCode::Counts &counts() const { return counts_; }
    /// Whether what was met before comes again, in the pixel on the left or the one above.
    [[nodiscard]] bool isRepetitive() const { return repeated_ * 16 >= looked_; }

private:
    std::array<LiteralCode::Counts, 4> lanes_{}; ///< else a byte would wait for the count of the one before
    LiteralCode::Counts counts_{};
    std::size_t looked_ = 0;
    std::size_t repeated_ = 0;

    void count(std::span<const std::uint8_t> bytes)
    {
        std::size_t i = 0;
        for (; i + 4 <= bytes.size(); i += 4)
            for (std::size_t lane = 0; lane < 4; ++lane)
                ++lanes_[lane][bytes[i + lane]];
        for (; i < bytes.size(); ++i)
            ++lanes_[0][bytes[i]];
    }
    static bool isSame(std::span<const std::uint8_t> bytes, std::size_t a, std::size_t b)
    {
        return std::memcmp(bytes.data() + a, bytes.data() + b, 8) == 0;
    }
};

} // namespace

/// The libraries that look for repetitions.
///
/// ISA-L's quickest level that adapts its code takes hardly any time; but where there is next to nothing but
/// repetitions, zlib spells them in half as many bytes.
class PngStripEncoder::Deflater {
public:
    Deflater() { hasZlib_ = deflateInit2(&zlib_, 4, Z_DEFLATED, -15, 8, Z_DEFAULT_STRATEGY) == Z_OK; }
    Deflater(const Deflater &) = delete;
    Deflater &operator=(const Deflater &) = delete;
    ~Deflater() { deflateEnd(&zlib_); }

    /// These write into `room` and return how many bytes that were; 0 if there was not enough room.
    std::size_t byIsal(std::span<std::uint8_t> bytes, std::span<std::uint8_t> room)
    {
        isal_deflate_init(&isal_);
        isal_.level = 1;
        isal_.level_buf = levelBuffer_.data();
        isal_.level_buf_size = static_cast<std::uint32_t>(levelBuffer_.size());
        isal_.flush = SYNC_FLUSH;
        isal_.next_in = bytes.data();
        isal_.avail_in = static_cast<std::uint32_t>(bytes.size());
        isal_.next_out = room.data();
        isal_.avail_out = static_cast<std::uint32_t>(room.size());
        const bool isDone = isal_deflate(&isal_) == COMP_OK && isal_.avail_in == 0 && isal_.avail_out > 0;
        return isDone ? isal_.total_out : 0;
    }
    std::size_t byZlib(std::span<std::uint8_t> bytes, std::span<std::uint8_t> room)
    {
        if (!hasZlib_ || deflateReset(&zlib_) != Z_OK)
            return 0;
        zlib_.next_in = bytes.data();
        zlib_.avail_in = static_cast<uInt>(bytes.size());
        zlib_.next_out = room.data();
        zlib_.avail_out = static_cast<uInt>(room.size());
        const bool isDone =
            deflate(&zlib_, Z_SYNC_FLUSH) == Z_OK && zlib_.avail_in == 0 && zlib_.avail_out > 0;
        return isDone ? zlib_.total_out : 0;
    }

private:
    Bytes levelBuffer_ = Bytes(ISAL_DEF_LVL1_DEFAULT);
    isal_zstream isal_{};
    z_stream zlib_{};
    bool hasZlib_ = false;
};

PngStripEncoder::PngStripEncoder() = default;
PngStripEncoder::~PngStripEncoder() = default;
PngStripEncoder::PngStripEncoder(PngStripEncoder &&) noexcept = default;
PngStripEncoder &PngStripEncoder::operator=(PngStripEncoder &&) noexcept = default;

void PngStripEncoder::prepare(std::size_t rowBytes, int rows)
{
    const std::size_t bytes = (rowBytes + 1) * static_cast<std::size_t>(rows);
    for (Bytes *filtered : {&average_, &up_})
        filtered->resize(std::max(filtered->size(), bytes));
    rowRoom_.resize(std::max(rowRoom_.size(), 2 * rowBytes));
    trial_.resize(std::max(trial_.size(), LiteralCode::roomFor(bytes)));
    if (!deflater_)
        deflater_ = std::make_unique<Deflater>();
}

std::size_t PngStripEncoder::roomFor(std::size_t rowBytes, int rows)
{
    return pngChunkFrame + LiteralCode::roomFor((rowBytes + 1) * static_cast<std::size_t>(rows));
}

std::span<std::uint8_t> PngStripEncoder::filter(const Rows &rows, std::uint8_t kind, Bytes &into)
{
    const std::size_t rowBytes = rows.picture.rowBytes();
    const auto room = [&](int y) { return std::span(rowRoom_).subspan(y % 2 == 0 ? 0 : rowBytes, rowBytes); };
    const std::uint8_t *above = rowRoom_.data() + rowBytes;
    if (rows.first == 0)
        std::fill_n(rowRoom_.data() + rowBytes, rowBytes, std::uint8_t{0}); // black lies above the picture
    else
        above = rows.picture.row(rows.first - 1, room(rows.first - 1));
    std::uint8_t *out = into.data();
    for (int y = rows.first; y < rows.end; ++y) {
        const std::uint8_t *row = rows.picture.row(y, room(y));
        *out++ = kind;
        (kind == upFilter ? &lessUp : &lessAverage)(row, above, rowBytes, out);
        out += rowBytes;
        above = row;
    }
    return {into.data(), out};
}

PngStripEncoder::Strip PngStripEncoder::encode(const Rows &rows, std::uint8_t *chunk) noexcept
{
    const std::span<std::uint8_t> average = filter(rows, averageFilter, average_);
    const Sample sample(average, rows.picture.rowBytes());
    const LiteralCode code(sample.counts());
    const double bits = code.meanBits(sample.counts());
    constexpr double fewBits = 2; // so plain that there will be longer repetitions
    std::uint8_t *const data = pngChunkData(chunk);
    Deflated deflated;
    if (sample.isRepetitive() || bits < fewBits) {
        const auto byLiterals = static_cast<std::size_t>(bits / 8 * static_cast<double>(average.size()));
        deflated = deflateBest(average, filter(rows, upFilter, up_), byLiterals, data);
    }
    if (!deflated.end)
        deflated = {average, code.write(average, data)};
    return {endPngChunk(chunk, "IDAT", deflated.end),
            isal_adler32(1, deflated.filtered.data(), deflated.filtered.size()), deflated.filtered.size()};
}

PngStripEncoder::Deflated PngStripEncoder::deflateBest(std::span<std::uint8_t> average,
                                                       std::span<std::uint8_t> up, std::size_t toBeat,
                                                       std::uint8_t *into)
{
    Deflated best;
    const auto keepLess = [&](std::span<std::uint8_t> filtered, std::size_t size) {
        if (size == 0 || size >= toBeat)
            return;
        toBeat = size;
        best = {filtered, std::copy_n(trial_.data(), size, into)};
    };
    keepLess(average, deflater_->byIsal(average, trial_));
    keepLess(up, deflater_->byIsal(up, trial_));
    if (toBeat < up.size() / 64)
        keepLess(up, deflater_->byZlib(up, trial_));
    return best;
}

} // namespace skyflare
