#include "platform/camera/GstSetup.h"

namespace skyflare {

Result<> initialiseGStreamer()
{
    static const Result<> outcome = []() -> Result<> {
        GError *error = nullptr;
        if (gst_init_check(nullptr, nullptr, &error))
            return {};
        const GLibError held(error);
        return Error{"GStreamer", held ? held->code : 0,
                     std::string("GStreamer does not start: ") + (held ? held->message : "no reason given")};
    }();
    return outcome;
}

Result<Element> makeGstElement(const char *factory)
{
    if (const auto ready = initialiseGStreamer(); !ready)
        return ready.error();
    GstElement *element = gst_element_factory_make(factory, nullptr);
    if (!element)
        return Error{"GStreamer", 0, std::string("GStreamer's part \"") + factory + "\" is not installed"};
    gst_object_ref_sink(element);
    return Element(element);
}

} // namespace skyflare
