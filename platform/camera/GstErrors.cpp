#include "platform/camera/GstErrors.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <string_view>

namespace skyflare {

namespace {

GQuark sourceErrorDomain()
{
    return g_quark_from_static_string("skyflare-source-error");
}

enum class Domain { Resource, Stream, Core };

struct ErrorRow {
    Domain domain;
    int code;
    const char *line;
};

constexpr const char *damaged = "its data are damaged";
constexpr const char *noFilm = "this is not a film";

constexpr const char *unreadable = "its pictures are of a kind that cannot be read";
constexpr const char *busy = "it is used by another program: close that one and start again";
constexpr const char *refused = "it may not be opened: add your user to the group \"video\" and log in again";
constexpr const char *absent = "it is not there: plug it in and start again";

constexpr std::array<ErrorRow, 6> cameraRows{{
    {Domain::Resource, GST_RESOURCE_ERROR_BUSY, busy},
    {Domain::Resource, GST_RESOURCE_ERROR_NOT_AUTHORIZED, refused},
    {Domain::Resource, GST_RESOURCE_ERROR_NOT_FOUND, absent},
    {Domain::Resource, GST_RESOURCE_ERROR_OPEN_READ_WRITE,
     "it cannot be opened: unplug it, plug it in and start again"},
    {Domain::Resource, GST_RESOURCE_ERROR_READ, "it cannot be read: unplug it, plug it in and start again"},
    {Domain::Resource, GST_RESOURCE_ERROR_SETTINGS,
     "it refuses its own settings: close other programs that use it, or plug it in elsewhere"},
}};

/// What the system says goes before the code of an error, which is often the same for all.
struct SystemRow {
    int number; ///< errno
    const char *line;
};

constexpr std::array<SystemRow, 6> systemRows{{
    {EBUSY, busy},
    {EACCES, refused},
    {EPERM, refused},
    {ENODEV, absent},
    {ENOENT, absent},
    {EPIPE, "the connection to it has broken off: start again"},
}};

struct TextRow {
    const char *text; ///< never translated
    const char *line;
};

constexpr std::array<TextRow, 4> textRows{{
    {"reason not-negotiated", unreadable},
    {"no more input formats", unreadable},
    {"no target node available", absent},
    {"connection error", "PipeWire has ended: start again when it is back"},
}};

constexpr std::array<ErrorRow, 11> errorRows{{
    {Domain::Resource, GST_RESOURCE_ERROR_NOT_FOUND, "it is not there"},
    {Domain::Resource, GST_RESOURCE_ERROR_OPEN_READ, "it cannot be opened"},
    {Domain::Resource, GST_RESOURCE_ERROR_OPEN_READ_WRITE, "it cannot be opened"},
    {Domain::Resource, GST_RESOURCE_ERROR_BUSY, "it is in use by another program"},
    {Domain::Resource, GST_RESOURCE_ERROR_NOT_AUTHORIZED, "there is no permission to use it"},
    {Domain::Resource, GST_RESOURCE_ERROR_READ, "it cannot be read"},
    {Domain::Stream, GST_STREAM_ERROR_TYPE_NOT_FOUND, noFilm},
    {Domain::Stream, GST_STREAM_ERROR_WRONG_TYPE, noFilm},
    {Domain::Stream, GST_STREAM_ERROR_DECODE, damaged},
    {Domain::Stream, GST_STREAM_ERROR_DEMUX, damaged},
    {Domain::Stream, GST_STREAM_ERROR_FORMAT, damaged},
}};

GQuark quarkOf(Domain domain)
{
    switch (domain) {
    case Domain::Resource:
        return gst_resource_error_quark();
    case Domain::Stream:
        return gst_stream_error_quark();
    case Domain::Core:
        break;
    }
    return gst_core_error_quark();
}

bool isMissingDecoder(const GError &error)
{
    return g_error_matches(&error, gst_stream_error_quark(), GST_STREAM_ERROR_CODEC_NOT_FOUND) ||
           g_error_matches(&error, gst_core_error_quark(), GST_CORE_ERROR_MISSING_PLUGIN);
}

std::string onOneLine(std::string text)
{
    std::replace(text.begin(), text.end(), '\n', ' ');
    while (!text.empty() && (text.back() == '.' || text.back() == ' '))
        text.pop_back();
    return text;
}

bool isCamera(GstObject *source)
{
    if (!GST_IS_ELEMENT(source))
        return false;
    const char *kind = gst_element_get_metadata(GST_ELEMENT(source), GST_ELEMENT_METADATA_KLASS);
    return kind && std::string_view(kind).starts_with("Source/Video");
}

template <typename Rows> const char *lineFor(const GError &error, const Rows &rows)
{
    for (const ErrorRow &row : rows) {
        if (g_error_matches(&error, quarkOf(row.domain), row.code))
            return row.line;
    }
    return nullptr;
}

/// @param said  all that the message says.
const char *cameraLine(const GError &error, const std::string &said)
{
    for (const SystemRow &row : systemRows) {
        if (said.find(g_strerror(row.number)) != std::string::npos)
            return row.line;
    }
    return lineFor(error, cameraRows);
}

/// A line of the tables, or null.
const char *knownLine(const GError &error, const std::string &said, bool ofCamera)
{
    for (const TextRow &row : textRows) {
        if (said.find(row.text) != std::string::npos)
            return row.line;
    }
    const char *line = ofCamera ? cameraLine(error, said) : nullptr;
    return line ? line : lineFor(error, errorRows);
}

void postError(GstElement *source, GQuark domain, int code, const std::string &line)
{
    const GLibError error(g_error_new_literal(domain, code, line.c_str()));
    gst_element_post_message(source, gst_message_new_error(GST_OBJECT(source), error.get(), nullptr));
}

} // namespace

void postSourceError(GstElement *source, const std::string &line)
{
    postError(source, sourceErrorDomain(), 0, line);
}

void postNoDecoder(GstElement *source)
{
    postError(source, gst_stream_error_quark(), GST_STREAM_ERROR_CODEC_NOT_FOUND, "no decoder");
}

GraphError describeError(GstMessage *message, const std::string &missingDecoders)
{
    GError *parsed = nullptr;
    gchar *details = nullptr;
    gst_message_parse_error(message, &parsed, &details);
    const GLibError error(parsed);
    const GLibText debug(details);
    if (error->domain == sourceErrorDomain())
        return {error->message, true};
    if (isMissingDecoder(*error)) {
        return {"nothing on this machine decodes its pictures" +
                (missingDecoders.empty() ? std::string() : " (missing: " + missingDecoders + ")")};
    }
    const std::string said = std::string(error->message) + ' ' + (debug ? debug.get() : "");
    if (const char *line = knownLine(*error, said, isCamera(GST_MESSAGE_SRC(message))))
        return {line};
    return {onOneLine(error->message)};
}

} // namespace skyflare
