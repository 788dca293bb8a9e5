#include "platform/image/Image.h"

#include "platform/image/JpegDecoder.h"
#include "platform/image/PictureHeader.h"
#include "platform/image/PngDecoder.h"

#include <algorithm>

namespace skyflare {

struct Image::Contents {
    std::shared_ptr<const ByteSource> encoded;
    PictureHeader header;
};

namespace {

struct Size {
    int width;
    int height;
};

/// The largest size of the picture's shape that fits into the box, each side at least 1.
Size fitted(const PictureHeader &picture, Size box)
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
int eighthsFor(const PictureHeader &picture, Size wanted)
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
    if (kind == PictureHeader::Kind::Png)
        return asRowDecoder(PngDecoder::open(encoded));
    return asRowDecoder(JpegDecoder::open(encoded, {.eighths = eighths}));
}

Result<PixelBuffer> reduceAllRows(RowDecoder &decoder, Size size)
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

Result<PixelBuffer> Image::thumbnail(int maxWidth, int maxHeight) const
{
    const auto encoded = contents_->encoded->readAll();
    if (!encoded)
        return encoded.error();
    const Size size = fitted(contents_->header, {maxWidth, maxHeight});
    const auto decoder = openDecoder(contents_->header.kind, **encoded, eighthsFor(contents_->header, size));
    if (!decoder)
        return decoder.error();
    return reduceAllRows(**decoder, size);
}

} // namespace skyflare
