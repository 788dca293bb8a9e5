#include "platform/camera/FilmSource.h"
#include "tests/camera/CameraRig.h"

#include <doctest/doctest.h>
#include <sys/fsuid.h>

#include <fstream>

namespace skyflare {

namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

struct FilmRun {
    explicit FilmRun(const fs::path &film) : rig(std::make_shared<FilmSource>(film, Pacing::LockStep))
    {
        REQUIRE(rig.runToEnd());
        ending = rig.events->ending();
    }
    CameraRig rig;
    SessionEvent ending;
};

void write(const fs::path &path, const std::string &bytes)
{
    std::ofstream(path, std::ios::binary) << bytes;
}

const std::string moving = "-f lavfi -i testsrc2=s=320x180:r=25:d=8 ";
const std::string sound = "-f lavfi -i sine=d=8 -c:a aac ";

bool contains(const std::string &text, const std::string &part)
{
    return text.find(part) != std::string::npos;
}

/// 8 s each, in the containers whose headers say so.
struct WholeFilms : Films {
    std::vector<fs::path> wholes = {
        make("fast.mp4", moving + sound + "-c:v libx264 -bf 3 -movflags +faststart"),
        make("film.mkv", moving + sound + "-c:v libx264 -bf 3"),
        make("film.webm", moving + "-c:v libvpx -deadline realtime"),
        make("film.avi", moving + "-c:v mpeg4"),
    };
};

} // namespace

TEST_CASE_FIXTURE(Films, "lock-step gives every picture of a film once, in order, at its film time")
{
    for (const std::string name : {"a.mp4", "a.mkv", "a.ts", "a.avi"}) {
        CAPTURE(name);
        FilmRun run(rising(name, name == "a.avi" ? "-c:v mpeg4" : "-c:v libx264 -bf 3"));
        CHECK(run.ending.kind == Kind::Ended);
        const FrameLog &frames = *run.rig.frames;
        REQUIRE(frames.times.size() == 50);
        for (std::size_t index = 0; index < 50; ++index) {
            CAPTURE(index);
            CHECK(std::chrono::abs(frames.times[index] - int(index) * 40ms) < 1us);
            // Limited range: luma 20 + 4 n is grey (4 + 4 n) × 255 / 219.
            CHECK(std::abs(frames.reds[index] - std::min(255, int(4 + 4 * index) * 255 / 219)) <= 3);
        }
        CHECK(run.rig.session->frameStatistics().delivered == 50);
        CHECK(run.rig.session->frameStatistics().dropped == 0);
        const SessionEvent started = run.rig.events->at(0);
        CHECK(started.kind == Kind::Started);
        CHECK(started.device == name);
        CHECK(started.format.width == 322);
        CHECK(started.format.height == 182);
        CHECK(started.format.framesPerSecond == doctest::Approx(25));
    }
}

TEST_CASE_FIXTURE(Films, "a film's format is taken as it is where it is known, else converted")
{
    struct Row {
        const char *name;
        const char *encoding;
        int width, height;
        std::optional<PixelFormat> format; ///< any known one where nothing is given
    };
    static const Row rows[] = {
        {"cropped.mp4", "-pix_fmt yuv420p -c:v libx264", 322, 182, PixelFormat::I420},
        {"full.mp4", "-pix_fmt yuvj420p -c:v libx264", 322, 182, PixelFormat::I420},
        {"hd.mp4",
         "-vf scale=1280:720:out_color_matrix=bt709 -colorspace bt709 -pix_fmt yuv420p -c:v libx264", 1280,
         720, PixelFormat::I420},
        {"odd.mkv", "-vf scale=321:181 -pix_fmt yuv420p -c:v ffv1", 321, 181, PixelFormat::I420},
        {"tenbit.mp4", "-pix_fmt yuv420p10le -c:v libx264", 322, 182, {}},
        {"wide.mkv", "-pix_fmt yuv422p -c:v ffv1", 322, 182, {}},
        {"packed.avi", "-pix_fmt yuyv422 -c:v rawvideo", 322, 182, PixelFormat::YUY2},
        {"photos.avi", "-pix_fmt yuvj422p -c:v mjpeg", 322, 182, {}},
    };
    for (const Row &row : rows) {
        CAPTURE(std::string(row.name));
        FilmRun run(
            make(row.name, std::string("-f lavfi -i color=0xB04020:s=322x182:r=5:d=1 ") + row.encoding));
        CHECK(run.ending.kind == Kind::Ended);
        const FrameLog &frames = *run.rig.frames;
        REQUIRE(frames.reds.size() == 5);
        CHECK(std::abs(frames.reds.back() - 0xB0) <= 3);
        CHECK(frames.last.width == row.width);
        CHECK(frames.last.height == row.height);
        CHECK((!row.format || frames.last.format == *row.format));
    }
}

TEST_CASE_FIXTURE(Films, "what is no film says so in one line that names the file")
{
    write(folder / "empty.mp4", "");
    write(folder / "letter.mp4", "Dear Sir or Madam, this is not a film at all.\n");
    write(folder / "junk.mkv", std::string(5000, '\xA7'));
    make("song.m4a", "-f lavfi -i sine=d=1");
    make("song.wav", "-f lavfi -i sine=d=1");
    const fs::path whole = rising("whole.mp4");
    fs::copy_file(whole, folder / "headless.mp4");
    fs::resize_file(folder / "headless.mp4", fs::file_size(whole) / 2);
    struct Row {
        const char *name;
        const char *says;
    };
    static constexpr Row rows[] = {
        {"missing.mp4", "there is no such file"},    {".", "this is a folder, not a film"},
        {"empty.mp4", "the file is empty"},          {"letter.mp4", "this is not a film"},
        {"junk.mkv", "this is not a film"},          {"song.m4a", "there are no pictures in it"},
        {"song.wav", "there are no pictures in it"}, {"headless.mp4", "the file ends without its index"},
    };
    for (const Row &row : rows) {
        CAPTURE(std::string(row.name));
        FilmRun run(folder / row.name);
        CHECK(run.ending.kind == Kind::Failed);
        CAPTURE(run.ending.message);
        CHECK(contains(run.ending.message, std::string(row.name) + ": "));
        CHECK(contains(run.ending.message, row.says));
        CHECK_FALSE(contains(run.ending.message, "\n"));
        CHECK(run.rig.events->size() == 2);
        CHECK_FALSE(run.rig.session->isRunning());
    }
    SUBCASE("nor may a film be read without permission")
    {
        fs::permissions(whole, fs::perms::none);
        setfsuid(65534); // root may read everything; this holds for this thread alone
        const auto element = FilmSource(whole, Pacing::LockStep).makeElement();
        setfsuid(geteuid());
        REQUIRE_FALSE(element);
        CHECK(contains(element.error().message, "there is no permission to read it"));
    }
    SUBCASE("nor is a film shown whose pictures nothing decodes")
    {
        GstRegistry *registry = gst_registry_get();
        const Handle<GList, &gst_plugin_feature_list_free> decoders(gst_element_factory_list_get_elements(
            GST_ELEMENT_FACTORY_TYPE_DECODER | GST_ELEMENT_FACTORY_TYPE_MEDIA_VIDEO, GST_RANK_MARGINAL));
        for (GList *item = decoders.get(); item; item = item->next)
            gst_registry_remove_feature(registry, GST_PLUGIN_FEATURE(item->data));
        FilmRun run(whole);
        for (GList *item = decoders.get(); item; item = item->next)
            gst_registry_add_feature(registry, GST_PLUGIN_FEATURE(gst_object_ref(item->data)));
        CHECK(contains(run.ending.message,
                       "whole.mp4: nothing on this machine decodes its pictures (missing: H.264"));
    }
}

TEST_CASE_FIXTURE(WholeFilms, "a film that is cut short gives what it has, and then says how much is missing")
{
    for (const fs::path &whole : wholes) {
        for (const int percent : {30, 60, 90}) {
            CAPTURE(whole.filename().string());
            CAPTURE(percent);
            const fs::path half = folder / ("half-" + whole.filename().string());
            fs::copy_file(whole, half, fs::copy_options::overwrite_existing);
            fs::resize_file(half, fs::file_size(whole) * unsigned(percent) / 100);
            FilmRun run(half);
            CAPTURE(run.ending.message);
            CHECK(run.ending.kind == Kind::Failed);
            CHECK(contains(run.ending.message, half.filename().string() + ": the film ends at "));
            CHECK(contains(run.ending.message, " of 8.0 s: the file is incomplete"));
            CHECK(run.rig.frames->times.size() > unsigned(percent));
            CHECK(run.rig.frames->times.size() < 200);
        }
    }
    // Its index comes last, and is all that is lost here.
    fs::resize_file(wholes[1], fs::file_size(wholes[1]) - 20);
    CHECK(FilmRun(wholes[1]).ending.kind == Kind::Ended);
}

TEST_CASE_FIXTURE(Films, "sound may last longer than pictures")
{
    for (const char *name : {"long.mp4", "long.mkv"}) {
        FilmRun run(make(name, "-f lavfi -i testsrc2=s=320x180:r=25:d=4 " + sound + "-c:v libx264"));
        CAPTURE(run.ending.message);
        CHECK(run.ending.kind == Kind::Ended);
        CHECK(run.rig.frames->times.size() == 100);
    }
}

TEST_CASE_FIXTURE(WholeFilms, "damage in the middle of a film costs only what is damaged")
{
    for (const fs::path &whole : wholes) {
        CAPTURE(whole.filename().string());
        std::fstream file(whole, std::ios::in | std::ios::out | std::ios::binary);
        file.seekp(std::streamoff(fs::file_size(whole) / 2));
        file << std::string(20000, '\xA7');
        file.close();
        FilmRun run(whole);
        CAPTURE(run.ending.message);
        CHECK((run.ending.kind == Kind::Ended || contains(run.ending.message, " (at ")));
        CHECK(run.rig.frames->times.size() > 80);
    }
}

} // namespace skyflare
