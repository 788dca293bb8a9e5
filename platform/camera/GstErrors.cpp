#include "platform/camera/GstErrors.h"

#include <algorithm>
#include <array>

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
    gst_message_parse_error(message, &parsed, nullptr);
    const GLibError error(parsed);
    if (error->domain == sourceErrorDomain())
        return {error->message, true};
    if (isMissingDecoder(*error)) {
        return {"nothing on this machine decodes its pictures" +
                (missingDecoders.empty() ? std::string() : " (missing: " + missingDecoders + ")")};
    }
    for (const ErrorRow &row : errorRows) {
        if (g_error_matches(error.get(), quarkOf(row.domain), row.code))
            return {row.line};
    }
    return {onOneLine(error->message)};
}

} // namespace skyflare
