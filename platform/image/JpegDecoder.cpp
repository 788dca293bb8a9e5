#include "platform/image/JpegDecoder.h"

#include "platform/base/Bytes.h"

#include <array>
#include <csetjmp>
#include <cstddef>
#include <cstdio>

// jpeglib.h wants size_t and FILE from its user.
#include <jerror.h>
#include <jpeglib.h>

namespace skyflare {

struct JpegDecoder::State {
    jpeg_decompress_struct jpeg{};
    jpeg_error_mgr errors{};
    std::jmp_buf onError{};
    int damageCode = 0; ///< of the first warning that means lost pixels
    std::array<char, JMSG_LENGTH_MAX> message{};
    Bytes cmykRow;

    State() = default;
    State(const State &) = delete;
    State &operator=(const State &) = delete;
    ~State() { jpeg_destroy_decompress(&jpeg); }

    [[nodiscard]] Error error() const { return {"JPEG", damageCode, message.data()}; }
};

namespace {

using State = JpegDecoder::State;

void keepMessage(j_common_ptr jpeg)
{
    auto *state = static_cast<State *>(jpeg->client_data);
    state->damageCode = jpeg->err->msg_code;
    jpeg->err->format_message(jpeg, state->message.data());
}

[[noreturn]] void leave(j_common_ptr jpeg)
{
    keepMessage(jpeg);
    std::longjmp(static_cast<State *>(jpeg->client_data)->onError, 1);
}

/// Level -1 is a warning, 0 and above are for the curious.
void note(j_common_ptr jpeg, int level)
{
    // Bytes between segments and odd version numbers cost no pixel; some cameras write them.
    static constexpr std::array harmless{JWRN_EXTRANEOUS_DATA, JWRN_JFIF_MAJOR, JWRN_ADOBE_XFORM,
                                         JWRN_BOGUS_ICC};
    if (level >= 0 || static_cast<State *>(jpeg->client_data)->damageCode != 0)
        return;
    for (const int code : harmless) {
        if (jpeg->err->msg_code == code)
            return;
    }
    keepMessage(jpeg);
}

void sayNothing(j_common_ptr) {}

/// Runs `call`; false if the library gave up in it, or noted damage. What it gives up is left by longjmp:
/// `call` and what it calls own nothing.
template <typename Call> bool guarded(State &state, const Call &call)
{
    if (setjmp(state.onError) != 0)
        return false;
    call(state.jpeg);
    return state.damageCode == 0;
}

void configure(jpeg_decompress_struct &jpeg, JpegDecoder::Options options)
{
    const bool cmyk = jpeg.jpeg_color_space == JCS_CMYK || jpeg.jpeg_color_space == JCS_YCCK;
    jpeg.out_color_space = cmyk ? JCS_CMYK : JCS_RGB;
    jpeg.scale_num = static_cast<unsigned>(options.eighths);
    jpeg.scale_denom = 8;
    jpeg.do_fancy_upsampling = options.chroma == JpegDecoder::Chroma::Smooth ? TRUE : FALSE;
    jpeg.dct_method = JDCT_ISLOW;
}

/// Ink to light. Adobe's files hold the inks inverted.
void convertCmyk(const Bytes &cmyk, bool inverted, std::span<std::uint8_t> rgb)
{
    const auto light = [inverted](int ink) { return inverted ? ink : 255 - ink; };
    for (std::size_t x = 0; 3 * x + 2 < rgb.size(); ++x) {
        const int black = light(cmyk[4 * x + 3]);
        for (std::size_t c = 0; c < 3; ++c)
            rgb[3 * x + c] = static_cast<std::uint8_t>((light(cmyk[4 * x + c]) * black + 127) / 255);
    }
}

} // namespace

JpegDecoder::JpegDecoder(std::unique_ptr<State> state) : state_(std::move(state)) {}
JpegDecoder::~JpegDecoder() = default;

Result<std::unique_ptr<JpegDecoder>> JpegDecoder::open(std::span<const std::uint8_t> encoded, Options options)
{
    auto state = std::make_unique<State>();
    state->jpeg.err = jpeg_std_error(&state->errors);
    state->errors.error_exit = leave;
    state->errors.emit_message = note;
    state->errors.output_message = sayNothing;
    state->jpeg.client_data = state.get();
    const bool opened = guarded(*state, [encoded, options](jpeg_decompress_struct &jpeg) {
        jpeg_create_decompress(&jpeg); // keeps err and client_data
        jpeg_mem_src(&jpeg, encoded.data(), encoded.size());
        jpeg_read_header(&jpeg, TRUE);
        configure(jpeg, options);
        jpeg_start_decompress(&jpeg);
    });
    if (!opened)
        return state->error();
    if (state->jpeg.output_components == 4)
        state->cmykRow.resize(std::size_t{state->jpeg.output_width} * 4);
    return std::unique_ptr<JpegDecoder>(new JpegDecoder(std::move(state)));
}

int JpegDecoder::width() const
{
    return static_cast<int>(state_->jpeg.output_width);
}

int JpegDecoder::height() const
{
    return static_cast<int>(state_->jpeg.output_height);
}

Result<> JpegDecoder::readRow(std::span<std::uint8_t> rgb)
{
    if (rgb.size() < std::size_t{state_->jpeg.output_width} * 3)
        return Error{"JPEG", 0, "the row does not fit"};
    if (state_->damageCode != 0)
        return state_->error();
    const bool cmyk = !state_->cmykRow.empty();
    JSAMPROW row = cmyk ? state_->cmykRow.data() : rgb.data();
    const bool read = guarded(*state_, [&row](jpeg_decompress_struct &jpeg) {
        jpeg_read_scanlines(&jpeg, &row, 1);
        if (jpeg.output_scanline == jpeg.output_height)
            jpeg_finish_decompress(&jpeg);
    });
    if (!read)
        return state_->error();
    if (cmyk)
        convertCmyk(state_->cmykRow, state_->jpeg.saw_Adobe_marker != 0, rgb);
    return {};
}

} // namespace skyflare
