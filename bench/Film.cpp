// How quickly skyflare-watch goes through a film, beside the same decoder into a sink that throws frames
// away.
//
// Both are processes of their own, started in turn, and count from their start to their end.

#include "bench/Process.h"
#include "bench/Table.h"
#include "bench/WorkFolder.h"
#include "platform/camera/GstSetup.h"

#include <cstdio>
#include <cstring>
#include <fstream>
#include <sstream>

namespace skyflare::bench {

namespace {

constexpr int frames = 600; // 20 s
constexpr int rounds = 7;

/// A dark, noisy night of 1080p at 30 frames a second, in H.264 with B-frames as a phone writes it: about 17
/// million bits a second.
bool makeFilm(const std::string &path)
{
    return runProgram({"ffmpeg",    "-v",
                       "error",     "-y",
                       "-f",        "lavfi",
                       "-i",        "color=c=0x080a14:s=1920x1080:r=30,noise=alls=14:allf=t:all_seed=1",
                       "-frames:v", std::to_string(frames),
                       "-c:v",      "libx264",
                       "-preset",   "superfast",
                       "-bf",       "2",
                       "-b:v",      "17M",
                       "-pix_fmt",  "yuv420p",
                       path},
                      "/dev/null") >= 0;
}

void linkPictures(GstElement *, GstPad *pad, gpointer sink)
{
    const Pad into(gst_element_get_static_pad(static_cast<GstElement *>(sink), "sink"));
    if (!gst_pad_is_linked(into.get()))
        gst_pad_link(pad, into.get());
}

/// The yardstick's process: decodes the film, shows nothing.
int decode(const char *film)
{
    const auto decoder = makeGstElement("uridecodebin");
    const auto sink = makeGstElement("fakesink");
    const GLibText uri(gst_filename_to_uri(film, nullptr));
    if (!decoder || !sink || !uri)
        return 1;
    const Pipeline pipeline = makePipeline();
    g_object_set(decoder->get(), "uri", uri.get(), nullptr);
    g_object_set(sink->get(), "sync", FALSE, nullptr);
    gst_bin_add_many(GST_BIN(pipeline.get()), decoder->get(), sink->get(), nullptr);
    takePaddedPictures(sink->get()); // as skyflare-watch's own sink does
    g_signal_connect(decoder->get(), "pad-added", G_CALLBACK(&linkPictures), sink->get());
    if (gst_element_set_state(pipeline.get(), GST_STATE_PLAYING) == GST_STATE_CHANGE_FAILURE)
        return 1;
    const Bus bus(gst_element_get_bus(pipeline.get()));
    const Message last(gst_bus_timed_pop_filtered(
        bus.get(), GST_CLOCK_TIME_NONE, static_cast<GstMessageType>(GST_MESSAGE_EOS | GST_MESSAGE_ERROR)));
    return GST_MESSAGE_TYPE(last.get()) == GST_MESSAGE_EOS ? 0 : 1;
}

bool saysAllFrames(const std::string &output)
{
    std::ostringstream said;
    said << std::ifstream(output).rdbuf();
    return said.str().find(std::to_string(frames) + " frames in ") != std::string::npos;
}

int measure(const std::string &self)
{
    const WorkFolder folder;
    const std::string film = folder.path() / "night.mp4";
    const std::string said = folder.path() / "said";
    if (folder.path().empty() || !makeFilm(film)) {
        std::fprintf(stderr, "no film could be made in %s\n", folder.path().c_str());
        return 1;
    }
    const std::vector<std::string> watch{SKYFLARE_WATCH, film, "--quiet", "--data-dir",
                                         folder.path() / "data"};
    std::vector<double> decoding;
    std::vector<double> watching;
    for (int round = 0; round < rounds; ++round) {
        decoding.push_back(runProgram({self, "--decode", film}, "/dev/null"));
        watching.push_back(runProgram(watch, said));
        if (decoding.back() < 0 || watching.back() < 0 || !saysAllFrames(said)) {
            std::fprintf(stderr, "a run has failed, or has not seen all frames\n");
            return 1;
        }
    }
    std::vector<double> speeds;
    for (std::size_t round = 0; round < decoding.size(); ++round)
        speeds.push_back(decoding[round] / watching[round]);
    const double speed = median(speeds);
    Table table("A film");
    table.add({.what = "skyflare-watch on " + std::to_string(frames) + " frames of H.264 1080p",
               .measured = duration(median(watching)),
               .yardstick = "decoded and thrown away: " + duration(median(decoding)),
               .ratio = ratio(speed) + " its speed",
               .reach = ">= 0.9 x",
               .isReached = speed >= 0.9});
    table.print();
    return 0;
}

} // namespace

} // namespace skyflare::bench

int main(int argc, char **argv)
{
    if (!skyflare::initialiseGStreamer())
        return 1;
    if (argc == 3 && std::strcmp(argv[1], "--decode") == 0)
        return skyflare::bench::decode(argv[2]);
    return skyflare::bench::measure(argv[0]);
}
