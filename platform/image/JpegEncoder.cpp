#include "platform/image/JpegEncoder.h"

#include <array>
#include <csetjmp>
#include <cstddef>
#include <cstdio>
#include <cstdlib>

// jpeglib.h wants size_t and FILE from its user.
#include <jpeglib.h>

namespace skyflare {
namespace {

/// The library's state, and what it has written.
struct Encoder {
    jpeg_compress_struct jpeg{};
    jpeg_error_mgr errors{};
    std::jmp_buf onError{};
    std::array<char, JMSG_LENGTH_MAX> message{};
    unsigned char *written = nullptr; // the library's malloc
    unsigned long size = 0;

    Encoder() = default;
    Encoder(const Encoder &) = delete;
    Encoder &operator=(const Encoder &) = delete;
    ~Encoder()
    {
        jpeg_destroy_compress(&jpeg);
        std::free(written); // NOLINT(cppcoreguidelines-no-malloc): as the library has it
    }
};

[[noreturn]] void leave(j_common_ptr jpeg)
{
    auto *encoder = static_cast<Encoder *>(jpeg->client_data);
    jpeg->err->format_message(jpeg, encoder->message.data());
    std::longjmp(encoder->onError, 1);
}

void sayNothing(j_common_ptr) {}

void writeAll(Encoder &encoder, const PixelBuffer &pixels, int quality)
{
    jpeg_compress_struct &jpeg = encoder.jpeg;
    jpeg_create_compress(&jpeg);
    jpeg_mem_dest(&jpeg, &encoder.written, &encoder.size);
    jpeg.image_width = static_cast<JDIMENSION>(pixels.width);
    jpeg.image_height = static_cast<JDIMENSION>(pixels.height);
    jpeg.input_components = 3;
    jpeg.in_color_space = JCS_RGB;
    jpeg_set_defaults(&jpeg);
    jpeg_set_quality(&jpeg, quality, TRUE);
    jpeg_start_compress(&jpeg, TRUE);
    for (int y = 0; y < pixels.height; ++y) {
        auto *row = const_cast<JSAMPROW>(pixels.row(y).data()); // which is only read
        jpeg_write_scanlines(&jpeg, &row, 1);
    }
    jpeg_finish_compress(&jpeg);
}

} // namespace

Result<Bytes> encodeJpeg(const PixelBuffer &pixels, int quality)
{
    Encoder encoder;
    encoder.jpeg.err = jpeg_std_error(&encoder.errors);
    encoder.errors.error_exit = leave;
    encoder.errors.output_message = sayNothing;
    encoder.jpeg.client_data = &encoder;
    if (setjmp(encoder.onError) != 0) // writeAll() and what it calls own nothing
        return Error{"JPEG", encoder.errors.msg_code, encoder.message.data()};
    writeAll(encoder, pixels, quality);
    return Bytes(encoder.written, encoder.written + encoder.size);
}

} // namespace skyflare
