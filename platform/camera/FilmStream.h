#pragma once

#include "platform/base/Result.h"
#include "platform/camera/FilmFile.h"
#include "platform/camera/GstHandles.h"

#include <atomic>
#include <string>

namespace skyflare {

/// The inside of a film's element: decodes its first picture track and, at the end, tells a film that is
/// through from one that has been cut short.
///
/// Threads: made on any one; the rest runs on GStreamer's streaming threads, one at a time for the pictures.
/// Belongs to the element that make() gives, and ends with it.
class FilmStream {
public:
    /// A bin whose pad "src" appears when the film is open. A film that cannot be shown, or not whole, posts
    /// an error that names it.
    static Result<Element> make(const char *uri, const std::string &name, const FilmFile &file);

    /// For make(): the inside of `bin`.
    FilmStream(GstElement *bin, std::string name, const FilmFile &file);

private:
    static gboolean isDecodingWanted(GstElement *decoder, GstPad *pad, GstCaps *caps, gpointer self);
    static void padAdded(GstElement *decoder, GstPad *pad, gpointer self);
    static void unknownTypeFound(GstElement *decoder, GstPad *pad, GstCaps *caps, gpointer self);
    static void allPadsAdded(GstElement *decoder, gpointer self);
    static GstPadProbeReturn picturePassing(GstPad *pad, GstPadProbeInfo *info, gpointer self);

    void exposePictures(GstPad *pad);
    void notePicture(GstPad *pad, GstBuffer *picture);
    void noteEnd();

    GstElement *bin_; ///< owns this
    std::string name_;
    FilmFile file_;
    std::atomic<bool> hasPictures_ = false;
    std::atomic<bool> hasUnknownPictures_ = false;

    GstSegment segment_{};
    bool hasShownPicture_ = false;
    GstClockTime pictureStart_ = 0; ///< of the newest picture, stream time
    GstClockTime longestGap_ = 0;   ///< between two pictures
    GstClockTime end_ = 0;          ///< of the newest picture, stream time
    GstClockTime declaredLength_ = GST_CLOCK_TIME_NONE;
};

} // namespace skyflare
