#include "platform/camera/FrameReader.h"

#include "platform/camera/FramePlanes.h"
#include "platform/image/PictureHeader.h"

#include <gst/video/video.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace skyflare {

namespace {

struct FormatRow {
    GstVideoFormat gst;
    PixelFormat format;
};

constexpr std::array<FormatRow, 8> formatRows{{
    {GST_VIDEO_FORMAT_NV12, PixelFormat::NV12},
    {GST_VIDEO_FORMAT_I420, PixelFormat::I420},
    {GST_VIDEO_FORMAT_YUY2, PixelFormat::YUY2},
    {GST_VIDEO_FORMAT_UYVY, PixelFormat::UYVY},
    {GST_VIDEO_FORMAT_RGBx, PixelFormat::RGBx},
    {GST_VIDEO_FORMAT_BGRx, PixelFormat::BGRx},
    {GST_VIDEO_FORMAT_RGB, PixelFormat::RGB},
    {GST_VIDEO_FORMAT_GRAY8, PixelFormat::GRAY8},
}};

PixelFormat pixelFormat(GstVideoFormat gst)
{
    const auto *row = std::find_if(formatRows.begin(), formatRows.end(),
                                   [gst](const FormatRow &candidate) { return candidate.gst == gst; });
    return row == formatRows.end() ? PixelFormat::Unknown : row->format;
}

ColorMatrix colorMatrix(GstVideoColorMatrix matrix)
{
    switch (matrix) {
    case GST_VIDEO_COLOR_MATRIX_BT601:
    case GST_VIDEO_COLOR_MATRIX_FCC:
        return ColorMatrix::Bt601;
    case GST_VIDEO_COLOR_MATRIX_BT2020:
        return ColorMatrix::Bt2020;
    default:
        return ColorMatrix::Bt709;
    }
}

/// A stream that names its range but not its matrix: GStreamer fills in what is usual for the size, and
/// forgets the range.
ColorRange colorRange(const GstVideoInfo &info, const GstCaps *caps)
{
    GstVideoColorRange range = info.colorimetry.range;
    GstVideoColorimetry named{};
    const char *text = gst_structure_get_string(gst_caps_get_structure(caps, 0), "colorimetry");
    if (text && gst_video_colorimetry_from_string(&named, text) &&
        named.range != GST_VIDEO_COLOR_RANGE_UNKNOWN)
        range = named.range;
    return range == GST_VIDEO_COLOR_RANGE_0_255 ? ColorRange::Full : ColorRange::Limited;
}

/// A raw picture, readable for as long as this lives.
class RawPicture {
public:
    RawPicture(Sample sample, const GstVideoInfo &info) : sample_(std::move(sample))
    {
        isMapped_ = gst_video_frame_map(&frame_, &info, gst_sample_get_buffer(sample_.get()), GST_MAP_READ);
    }
    RawPicture(const RawPicture &) = delete;
    RawPicture &operator=(const RawPicture &) = delete;
    ~RawPicture()
    {
        if (isMapped_)
            gst_video_frame_unmap(&frame_);
    }
    [[nodiscard]] bool isMapped() const { return isMapped_; }
    [[nodiscard]] const GstVideoFrame &frame() const { return frame_; }

private:
    Sample sample_;
    GstVideoFrame frame_{};
    bool isMapped_ = false;
};

/// A compressed picture, readable for as long as this lives.
class CompressedPicture {
public:
    explicit CompressedPicture(Sample sample) : sample_(std::move(sample))
    {
        isMapped_ = gst_buffer_map(gst_sample_get_buffer(sample_.get()), &map_, GST_MAP_READ);
    }
    CompressedPicture(const CompressedPicture &) = delete;
    CompressedPicture &operator=(const CompressedPicture &) = delete;
    ~CompressedPicture()
    {
        if (isMapped_)
            gst_buffer_unmap(gst_sample_get_buffer(sample_.get()), &map_);
    }
    [[nodiscard]] bool isMapped() const { return isMapped_; }
    [[nodiscard]] const GstMapInfo &map() const { return map_; }

private:
    Sample sample_;
    GstMapInfo map_{};
    bool isMapped_ = false;
};

/// A device says so of pictures that it knows to be damaged, and of those that stand for none.
bool isWithoutPicture(GstBuffer *buffer)
{
    return GST_BUFFER_FLAG_IS_SET(buffer, GST_BUFFER_FLAG_CORRUPTED) ||
           GST_BUFFER_FLAG_IS_SET(buffer, GST_BUFFER_FLAG_GAP) || gst_buffer_get_size(buffer) == 0;
}

/// Whether what the buffer says of its rows can be what the stream promises.
bool isAsPromised(GstBuffer *buffer, const GstVideoInfo &info)
{
    const GstVideoMeta *meta = gst_buffer_get_video_meta(buffer);
    return !meta ||
           (meta->format == GST_VIDEO_INFO_FORMAT(&info) &&
            meta->n_planes == GST_VIDEO_INFO_N_PLANES(&info) &&
            meta->width >= static_cast<guint>(info.width) && meta->height >= static_cast<guint>(info.height));
}

/// Whether every row of the frame lies in the memory that is mapped for it.
bool isInsideMemory(const GstVideoFrame &mapped, const VideoFrame &frame)
{
    const bool hasMapForEachPlane = gst_buffer_get_video_meta(mapped.buffer) != nullptr;
    const auto shapes = planeShapes(frame.format, frame.width, frame.height);
    for (std::size_t plane = 0; plane < shapes.size(); ++plane) {
        const auto &[rowBytes, rows] = shapes[plane];
        if (rows == 0)
            continue;
        const GstMapInfo &map = mapped.map[hasMapForEachPlane ? plane : 0];
        const std::ptrdiff_t first = frame.planes[plane].data - map.data;
        const std::ptrdiff_t last = first + (rows - 1) * frame.planes[plane].stride;
        if (std::abs(frame.planes[plane].stride) < rowBytes || std::min(first, last) < 0 ||
            std::max(first, last) + rowBytes > static_cast<std::ptrdiff_t>(map.size))
            return false;
    }
    return true;
}

/// What of the picture is to be shown: PipeWire's cameras may give more than that.
PictureRegion regionOf(GstBuffer *buffer, const GstVideoInfo &info)
{
    const GstVideoCropMeta *crop = gst_buffer_get_video_crop_meta(buffer);
    if (crop && crop->width > 0 && crop->height > 0)
        return {crop->x, crop->y, crop->width, crop->height};
    return {0, 0, info.width, info.height};
}

VideoFrame readRaw(Sample sample, const GstVideoInfo &info, ColorRange range)
{
    GstBuffer *buffer = gst_sample_get_buffer(sample.get());
    if (!isAsPromised(buffer, info))
        return {};
    const PictureRegion region = regionOf(buffer, info);
    const auto picture = std::make_shared<RawPicture>(std::move(sample), info);
    if (!picture->isMapped())
        return {};
    const GstVideoFrame &mapped = picture->frame();
    VideoFrame frame;
    frame.format = pixelFormat(GST_VIDEO_FRAME_FORMAT(&mapped));
    frame.width = GST_VIDEO_FRAME_WIDTH(&mapped);
    frame.height = GST_VIDEO_FRAME_HEIGHT(&mapped);
    const std::size_t planes = std::min<std::size_t>(GST_VIDEO_FRAME_N_PLANES(&mapped), frame.planes.size());
    for (std::size_t plane = 0; plane < planes; ++plane) {
        frame.planes[plane] = {static_cast<const std::uint8_t *>(GST_VIDEO_FRAME_PLANE_DATA(&mapped, plane)),
                               GST_VIDEO_FRAME_PLANE_STRIDE(&mapped, plane)};
    }
    if (!isInsideMemory(mapped, frame))
        return {};
    frame.matrix = colorMatrix(info.colorimetry.matrix);
    frame.range = range;
    frame.owner = picture;
    const bool isUpsideDown = std::any_of(frame.planes.begin(), frame.planes.end(),
                                          [](const auto &plane) { return plane.stride < 0; });
    frame = cropped(std::move(frame), region);
    return isUpsideDown && frame.hasImageBuffer() ? copied(frame) : frame;
}

/// The bytes of a mapped picture, to look into.
class MappedBytes final : public ByteSource {
public:
    explicit MappedBytes(const GstMapInfo &map) : map_(map) {}
    [[nodiscard]] std::uint64_t size() const override { return map_.size; }
    Result<> read(std::uint64_t offset, std::span<std::uint8_t> into) const override
    {
        if (offset > map_.size || into.size() > map_.size - offset)
            return Error{"camera", 0, "the picture is cut short"};
        std::memcpy(into.data(), map_.data + offset, into.size());
        return {};
    }

private:
    const GstMapInfo &map_;
};

/// A picture that is cut short, as a bad cable makes them, is none: half of it would pass for a flash.
VideoFrame readCompressed(Sample sample)
{
    const auto picture = std::make_shared<CompressedPicture>(std::move(sample));
    if (!picture->isMapped())
        return {};
    const auto header = readPictureHeader(MappedBytes(picture->map()));
    if (!header || header->kind != PictureHeader::Kind::Jpeg)
        return {};
    VideoFrame frame;
    frame.format = PixelFormat::Jpeg;
    frame.width = header->width;
    frame.height = header->height;
    frame.planes[0] = {picture->map().data, static_cast<std::ptrdiff_t>(picture->map().size)};
    // ITU-T T.871: JPEG's own matrix and range.
    frame.matrix = ColorMatrix::Bt601;
    frame.range = ColorRange::Full;
    frame.owner = picture;
    return frame;
}

} // namespace

VideoFrame FrameReader::read(Sample sample)
{
    const auto streamTime = nextStreamTime(sample.get());
    const GstCaps *caps = gst_sample_get_caps(sample.get());
    GstBuffer *buffer = gst_sample_get_buffer(sample.get());
    VideoFrame frame;
    GstVideoInfo info{};
    if (!caps || !buffer || isWithoutPicture(buffer)) {
        // nothing to read
    } else if (gst_structure_has_name(gst_caps_get_structure(caps, 0), "image/jpeg")) {
        frame = readCompressed(std::move(sample));
    } else if (gst_video_info_from_caps(&info, caps)) {
        const ColorRange range = colorRange(info, caps);
        frame = readRaw(std::move(sample), info, range);
    }
    frame.streamTime = streamTime;
    return frame;
}

CaptureFormat FrameReader::formatOf(const GstSample *sample)
{
    CaptureFormat format;
    const GstCaps *caps = gst_sample_get_caps(const_cast<GstSample *>(sample));
    if (!caps)
        return format;
    const GstStructure *structure = gst_caps_get_structure(caps, 0);
    gst_structure_get_int(structure, "width", &format.width);
    gst_structure_get_int(structure, "height", &format.height);
    int numerator = 0;
    int denominator = 1;
    const bool isKnown = gst_structure_get_fraction(structure, "framerate", &numerator, &denominator);
    if (isKnown && numerator > 0 && denominator > 0)
        format.framesPerSecond = static_cast<double>(numerator) / denominator;
    return format;
}

// A film with reordered pictures starts above 0, and so does a camera: the first picture is 0 here. Time
// never goes back, and a picture without a time of its own comes right after the one before.
std::chrono::nanoseconds FrameReader::nextStreamTime(GstSample *sample)
{
    const GstBuffer *buffer = gst_sample_get_buffer(sample);
    const GstSegment *segment = gst_sample_get_segment(sample);
    GstClockTime time = GST_CLOCK_TIME_NONE;
    if (buffer && segment && segment->format == GST_FORMAT_TIME)
        time = gst_segment_to_stream_time(segment, GST_FORMAT_TIME, GST_BUFFER_PTS(buffer));
    std::chrono::nanoseconds streamTime = lastStreamTime_ + std::chrono::nanoseconds(1);
    if (GST_CLOCK_TIME_IS_VALID(time)) {
        if (!firstTime_)
            firstTime_ = time;
        if (time > *firstTime_)
            streamTime = std::max(streamTime, std::chrono::nanoseconds(time - *firstTime_));
    }
    lastStreamTime_ = streamTime;
    return streamTime;
}

} // namespace skyflare
