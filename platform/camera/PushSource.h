#pragma once

#include "platform/camera/GstHandles.h"

#include <gst/base/gstpushsrc.h>
#include <gst/video/video.h>

#include <memory>

namespace skyflare {

/// What GStreamer wants of a source of pictures that keeps a `State` in C++.
///
/// `State` has an `info`, which tells what pictures it gives, and as statics `typeName`, `longName`,
/// `description`, `caps` (all that `info` may say) and `fillClass`, which sets the functions of the source.
/// Threads: any; GStreamer must be ready.
template <typename State> class PushSource {
public:
    static Element make()
    {
        static const GType type =
            g_type_register_static_simple(GST_TYPE_PUSH_SRC, State::typeName, sizeof(Class), &initialiseClass,
                                          sizeof(Instance), &initialise, GTypeFlags(0));
        auto *element = static_cast<GstElement *>(g_object_new(type, nullptr));
        gst_object_ref_sink(element);
        return Element(element);
    }
    static State &stateOf(gpointer element) { return *static_cast<Instance *>(element)->state; }
    static GstBaseSrcClass *parentClass() { return parentClass_; }

private:
    struct Instance {
        GstPushSrc parent;
        State *state; ///< owned; GObject knows no C++ members
    };
    struct Class {
        GstPushSrcClass parent;
    };

    static GstCaps *getCaps(GstBaseSrc *element, GstCaps *filter)
    {
        Caps caps(gst_video_info_to_caps(&stateOf(element).info));
        return filter ? gst_caps_intersect_full(filter, caps.get(), GST_CAPS_INTERSECT_FIRST)
                      : caps.release();
    }
    static void finalize(GObject *object)
    {
        const std::unique_ptr<State> last(&stateOf(object));
        G_OBJECT_CLASS(parentClass_)->finalize(object);
    }
    static void initialiseClass(gpointer classData, gpointer)
    {
        parentClass_ = GST_BASE_SRC_CLASS(g_type_class_peek_parent(classData));
        G_OBJECT_CLASS(classData)->finalize = &finalize;
        GstElementClass *elementClass = GST_ELEMENT_CLASS(classData);
        gst_element_class_set_static_metadata(elementClass, State::longName, "Source/Video",
                                              State::description, "Skyflare");
        const Caps caps(gst_caps_from_string(State::caps));
        gst_element_class_add_pad_template(
            elementClass, gst_pad_template_new("src", GST_PAD_SRC, GST_PAD_ALWAYS, caps.get()));
        GST_BASE_SRC_CLASS(classData)->get_caps = &getCaps;
        State::fillClass(GST_PUSH_SRC_CLASS(classData));
    }
    static void initialise(GTypeInstance *instance, gpointer)
    {
        static_cast<Instance *>(static_cast<gpointer>(instance))->state = std::make_unique<State>().release();
        gst_base_src_set_format(GST_BASE_SRC(instance), GST_FORMAT_TIME);
    }

    static inline GstBaseSrcClass *parentClass_ = nullptr; ///< written once, when the type is registered
};

} // namespace skyflare
