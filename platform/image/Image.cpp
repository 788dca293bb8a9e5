#include "platform/image/Image.h"

#include "platform/image/JpegDecoder.h"
#include "platform/image/PictureHeader.h"
#include "platform/image/PlainPngDecoder.h"
#include "platform/image/PngDecoder.h"

#include <algorithm>

namespace skyflare {

struct Image::Contents {
    std::shared_ptr<const ByteSource> encoded;
    PictureHeader header;
};

namespace {

/// The largest size of the picture's shape that fits into the box, each side at least 1.
PictureSize fitted(PictureSize picture, PictureSize box)
{
    const std::int64_t width = picture.width;
    const std::int64_t height = picture.height;
    const std::int64_t boxWidth = std::clamp<std::int64_t>(box.width, 1, width);
    const std::int64_t boxHeight = std::clamp<std::int64_t>(box.height, 1, height);
    const auto scaled = [](std::int64_t side, std::int64_t to, std::int64_t from) {
        return static_cast<int>(std::max<std::int64_t>(1, (2 * side * to + from) / (2 * from)));
    };
    if (boxWidth * height < boxHeight * width)
        return {static_cast<int>(boxWidth), scaled(height, boxWidth, width)};
    return {scaled(width, boxHeight, height), static_cast<int>(boxHeight)};
}

/// The smallest size, in eighths, at which a JPEG decodes to no less than `wanted`.
int eighthsFor(const PictureHeader &picture, PictureSize wanted)
{
    for (const int eighths : {1, 2, 4}) {
        if (picture.width * std::int64_t{eighths} >= std::int64_t{8} * wanted.width &&
            picture.height * std::int64_t{eighths} >= std::int64_t{8} * wanted.height)
            return eighths;
    }
    return 8;
}

template <typename Decoder> Result<std::unique_ptr<RowDecoder>> asRowDecoder(Result<Decoder> decoder)
{
    if (!decoder)
        return decoder.error();
    return std::unique_ptr<RowDecoder>(*std::move(decoder));
}

Result<std::unique_ptr<RowDecoder>> openDecoder(PictureHeader::Kind kind, const Bytes &encoded, int eighths)
{
    if (kind == PictureHeader::Kind::Png) {
        if (auto plain = PlainPngDecoder::open(encoded))
            return std::unique_ptr<RowDecoder>(std::move(plain));
        return asRowDecoder(PngDecoder::open(encoded));
    }
    return asRowDecoder(JpegDecoder::open(encoded, {.eighths = eighths}));
}

Result<PixelBuffer> reduceAllRows(RowDecoder &decoder, PictureSize size)
{
    AreaReducer reducer(decoder.width(), decoder.height(), size.width, size.height);
    Bytes row(static_cast<std::size_t>(decoder.width()) * 3);
    for (int y = 0; y < decoder.height(); ++y) {
        if (const auto read = decoder.readRow(row); !read)
            return read.error();
        reducer.addRow(row);
    }
    return reducer.take();
}

} // namespace

Result<Image> Image::fromData(std::shared_ptr<const ByteSource> encoded)
{
    if (!encoded)
        return Error{"picture", 0, "there is no picture"};
    const auto header = readPictureHeader(*encoded);
    if (!header)
        return header.error();
    return Image(std::make_shared<const Contents>(Contents{std::move(encoded), *header}));
}

Result<Image> Image::fromData(Bytes encoded)
{
    return fromData(std::make_shared<const MemoryBytes>(std::make_shared<const Bytes>(std::move(encoded))));
}

int Image::width() const
{
    return contents_->header.width;
}

int Image::height() const
{
    return contents_->header.height;
}

Result<std::shared_ptr<const Bytes>> Image::pngData() const
{
    if (contents_->header.kind == PictureHeader::Kind::Png)
        return contents_->encoded->readAll();
    const auto decoded = pixels();
    if (!decoded)
        return decoded.error();
    auto png = encodePng(*decoded);
    if (!png)
        return png.error();
    return std::make_shared<const Bytes>(*std::move(png));
}

Result<PixelBuffer> Image::pixels() const
{
    const auto encoded = contents_->encoded->readAll();
    if (!encoded)
        return encoded.error();
    const auto decoder = openDecoder(contents_->header.kind, **encoded, 8);
    if (!decoder)
        return decoder.error();
    return decodeAllRows(**decoder);
}

Result<PixelBuffer> Image::decodeAt(PictureSize size) const
{
    const auto encoded = contents_->encoded->readAll();
    if (!encoded)
        return encoded.error();
    const auto decoder = openDecoder(contents_->header.kind, **encoded, eighthsFor(contents_->header, size));
    if (!decoder)
        return decoder.error();
    const bool isAsLarge = size == PictureSize{(*decoder)->width(), (*decoder)->height()};
    return isAsLarge ? decodeAllRows(**decoder) : reduceAllRows(**decoder, size);
}

/// Nothing where the copy is missing, damaged, or of another size than it should be.
std::optional<PixelBuffer> Image::fromReduced(PictureSize size) const
{
    const auto bytes = reduced_->read();
    if (!bytes)
        return {};
    const auto copy = fromData(std::make_shared<const MemoryBytes>(bytes));
    if (!copy || copy->size() != copySize())
        return {};
    auto pixels = copy->decodeAt(size);
    return pixels ? std::optional(*std::move(pixels)) : std::nullopt;
}

/// The size of the small copy that there may be of a picture; of none, nothing.
std::optional<PictureSize> Image::copySize() const
{
    return reduced_ ? reducedSize(size()) : std::nullopt;
}

Result<PixelBuffer> Image::thumbnail(int maxWidth, int maxHeight) const
{
    const PictureSize wanted = fitted(size(), {maxWidth, maxHeight});
    const auto available = copySize();
    if (!available || !wanted.fitsInto(*available))
        return decodeAt(wanted);
    if (auto pixels = fromReduced(wanted))
        return *std::move(pixels);
    auto copy = decodeAt(*available);
    if (!copy)
        return copy.error();
    if (auto jpeg = encodeReduced(*copy))
        reduced_->write(*std::move(jpeg));
    return wanted == *available ? *std::move(copy) : reduced(*copy, wanted.width, wanted.height);
}

std::optional<PixelBuffer> Image::quickThumbnail(int maxWidth, int maxHeight) const
{
    const auto available = copySize();
    if (!available || fitted(size(), {maxWidth, maxHeight}).fitsInto(*available))
        return {};
    return fromReduced(*available);
}

Image Image::withReduced(std::shared_ptr<const ReducedPicture> reduced) const
{
    Image image(*this);
    image.reduced_ = std::move(reduced);
    return image;
}

} // namespace skyflare
