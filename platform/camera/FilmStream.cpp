#include "platform/camera/FilmStream.h"

#include "platform/camera/GstErrors.h"
#include "platform/camera/GstSetup.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <string_view>

namespace skyflare {

namespace {

/// So much may a cut film lack at its end and still count as whole: only sound, or its index, is lost then.
constexpr GstClockTime toleratedLoss = 300 * GST_MSECOND;

std::string_view mediaTypeOf(const GstCaps *caps)
{
    return gst_caps_is_empty(caps) || gst_caps_is_any(caps)
               ? std::string_view()
               : gst_structure_get_name(gst_caps_get_structure(caps, 0));
}

std::string inSeconds(GstClockTime time)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.1f s", static_cast<double>(time) / GST_SECOND);
    return text;
}

} // namespace

FilmStream::FilmStream(GstElement *bin, std::string name, const FilmFile &file)
    : bin_(bin), name_(std::move(name)), file_(file)
{
    gst_segment_init(&segment_, GST_FORMAT_TIME);
}

Result<Element> FilmStream::make(const char *uri, const std::string &name, const FilmFile &file)
{
    auto decoder = makeGstElement("uridecodebin");
    if (!decoder)
        return decoder.error();
    Element bin(gst_bin_new(nullptr));
    gst_object_ref_sink(bin.get());
    const auto destroy = [](gpointer self) {
        std::default_delete<FilmStream>()(static_cast<FilmStream *>(self));
    };
    FilmStream *self = std::make_unique<FilmStream>(bin.get(), name, file).release();
    g_object_set_data_full(G_OBJECT(bin.get()), "film-stream", self, destroy);
    g_object_set(decoder->get(), "uri", uri, nullptr);
    g_signal_connect(decoder->get(), "autoplug-continue", G_CALLBACK(&isDecodingWanted), self);
    g_signal_connect(decoder->get(), "pad-added", G_CALLBACK(&padAdded), self);
    g_signal_connect(decoder->get(), "unknown-type", G_CALLBACK(&unknownTypeFound), self);
    g_signal_connect(decoder->get(), "no-more-pads", G_CALLBACK(&allPadsAdded), self);
    gst_bin_add(GST_BIN(bin.get()), decoder->get());
    return bin;
}

gboolean FilmStream::isDecodingWanted(GstElement *, GstPad *, GstCaps *caps, gpointer)
{
    // Sound stays as it is: nobody listens.
    return mediaTypeOf(caps).substr(0, 6) != "audio/";
}

void FilmStream::padAdded(GstElement *, GstPad *pad, gpointer self)
{
    const Caps caps(gst_pad_query_caps(pad, nullptr));
    auto &stream = *static_cast<FilmStream *>(self);
    if (mediaTypeOf(caps.get()) == "video/x-raw" && !stream.hasPictures_.exchange(true))
        stream.exposePictures(pad);
}

void FilmStream::unknownTypeFound(GstElement *, GstPad *, GstCaps *caps, gpointer self)
{
    const std::string_view type = mediaTypeOf(caps);
    if (type.substr(0, 6) == "video/" || type.substr(0, 6) == "image/")
        static_cast<FilmStream *>(self)->hasUnknownPictures_ = true;
}

void FilmStream::allPadsAdded(GstElement *, gpointer self)
{
    const auto &stream = *static_cast<FilmStream *>(self);
    if (stream.hasPictures_)
        return;
    if (stream.hasUnknownPictures_)
        postNoDecoder(stream.bin_);
    else
        postSourceError(stream.bin_, stream.name_ + ": there are no pictures in it");
}

void FilmStream::exposePictures(GstPad *pad)
{
    constexpr auto passing =
        static_cast<GstPadProbeType>(GST_PAD_PROBE_TYPE_BUFFER | GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM);
    gst_pad_add_probe(pad, passing, &picturePassing, this, nullptr);
    GstPad *ghost = gst_ghost_pad_new("src", pad);
    gst_pad_set_active(ghost, TRUE);
    gst_element_add_pad(bin_, ghost);
}

GstPadProbeReturn FilmStream::picturePassing(GstPad *pad, GstPadProbeInfo *info, gpointer self)
{
    auto &stream = *static_cast<FilmStream *>(self);
    if ((GST_PAD_PROBE_INFO_TYPE(info) & GST_PAD_PROBE_TYPE_BUFFER) != 0) {
        stream.notePicture(pad, GST_PAD_PROBE_INFO_BUFFER(info));
        return GST_PAD_PROBE_OK;
    }
    GstEvent *event = GST_PAD_PROBE_INFO_EVENT(info);
    if (GST_EVENT_TYPE(event) == GST_EVENT_SEGMENT)
        gst_event_copy_segment(event, &stream.segment_);
    else if (GST_EVENT_TYPE(event) == GST_EVENT_EOS)
        stream.noteEnd();
    return GST_PAD_PROBE_OK;
}

void FilmStream::notePicture(GstPad *pad, GstBuffer *picture)
{
    gint64 length = 0;
    if (!hasShownPicture_ && file_.length)
        declaredLength_ = static_cast<GstClockTime>(file_.length->count());
    else if (!hasShownPicture_ && gst_pad_query_duration(pad, GST_FORMAT_TIME, &length) && length > 0)
        declaredLength_ = static_cast<GstClockTime>(length);
    const GstClockTime start =
        gst_segment_to_stream_time(&segment_, GST_FORMAT_TIME, GST_BUFFER_PTS(picture));
    if (GST_CLOCK_TIME_IS_VALID(start)) {
        if (hasShownPicture_ && start > pictureStart_)
            longestGap_ = std::max(longestGap_, start - pictureStart_);
        pictureStart_ = start;
        const GstClockTime duration = GST_BUFFER_DURATION(picture);
        end_ = std::max(end_, start + (GST_CLOCK_TIME_IS_VALID(duration) ? duration : 0));
    }
    hasShownPicture_ = true;
}

void FilmStream::noteEnd()
{
    if (!hasShownPicture_) {
        postSourceError(bin_, name_ + ": not one of its pictures can be read");
        return;
    }
    if (!file_.isCutShort)
        return;
    const bool isLengthKnown = GST_CLOCK_TIME_IS_VALID(declaredLength_);
    if (isLengthKnown && end_ + std::max(toleratedLoss, longestGap_) >= declaredLength_)
        return;
    postSourceError(bin_, name_ + ": the film ends at " + inSeconds(end_) +
                              (isLengthKnown ? " of " + inSeconds(declaredLength_) : std::string()) +
                              ": the file is incomplete");
}

} // namespace skyflare
