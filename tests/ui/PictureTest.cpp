#include "platform/image/PictureScaler.h"
#include "tests/fakes/FakeCamera.h"
#include "tests/ui/ShownWindow.h"
#include "ui/AspectFill.h"
#include "ui/LightCurve.h"
#include "ui/PreviewLayer.h"

#include <doctest/doctest.h>

#include <QLineF>

using namespace skyflare;

namespace {

/// A camera's picture: left third red, middle green, right blue.
VideoFrame threeColors(int width, int height)
{
    auto bytes = std::make_shared<Bytes>();
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const int third = x * 3 / width;
            for (int channel = 0; channel < 3; ++channel)
                bytes->push_back(channel == third ? 200 : 10);
        }
    }
    VideoFrame frame;
    frame.format = PixelFormat::RGB;
    frame.width = width;
    frame.height = height;
    frame.planes[0] = {bytes->data(), std::ptrdiff_t{width} * 3};
    frame.owner = bytes;
    return frame;
}

/// As its camera does.
void show(const CaptureSession &session, const VideoFrame &frame)
{
    if (const auto preview = session.preview())
        preview->show(frame);
}

} // namespace

TEST_CASE("what is seen of a picture that fills a view")
{
    CHECK(aspectFillRegion({1920, 1080}, {390, 844}) ==
          QRectF(QPointF((1920 - 1080.0 * 390 / 844) / 2, 0), QSizeF(1080.0 * 390 / 844, 1080)));
    CHECK(aspectFillRegion({1080, 1920}, {1000, 1000}) == QRectF(0, 420, 1080, 1080));
    CHECK(aspectFillRegion({0, 0}, {10, 10}).isEmpty());
    CHECK(aspectFitRect({200, 100}, {100, 100}) == QRectF(0, 25, 100, 50));
}

TEST_CASE("a scaled picture lies between its pixels")
{
    PixelBuffer two = PixelBuffer::ofSize(2, 1);
    two.rgb = {0, 100, 200, 100, 200, 0};
    PictureScaler scaler;
    SUBCASE("enlarged: the edges keep their colour, the middle is mixed")
    {
        std::vector<std::uint32_t> pixels(4 * 2, 7);
        scaler.scale(PixelRows(two), {pixels, 4, 2, 4});
        const std::vector<std::uint32_t> row{0xFF0064C8, 0xFF197D96, 0xFF4BAF32, 0xFF64C800};
        CHECK(std::vector(pixels.begin(), pixels.begin() + 4) == row);
        CHECK(std::vector(pixels.begin() + 4, pixels.end()) == row);
    }
    SUBCASE("halved: each pixel is the middle of two, however many are done at a time")
    {
        PixelBuffer ramp = PixelBuffer::ofSize(74, 1);
        for (std::uint32_t i = 0; i < ramp.rgb.size(); ++i)
            ramp.rgb[i] = static_cast<std::uint8_t>(i); // a row of 222 bytes
        std::vector<std::uint32_t> pixels(37);
        scaler.scale(PixelRows(ramp), {pixels, 37, 1, 37});
        for (std::uint32_t x = 0; x < 37; ++x) {
            CAPTURE(x);
            CHECK(pixels[x] == 0xFF020304 + x * 0x060606);
        }
    }
}

TEST_CASE("a preview shows the middle of the newest frame at the size of its view")
{
    FakeSession camera{{}};
    PreviewLayer layer(camera);
    layer.setBounds({30, 60}, 1.0); // of 90 × 60 the green third
    int arrived = 0;
    QObject::connect(&layer, &PreviewLayer::pictureArrived, &layer, [&] { ++arrived; });
    show(camera, threeColors(90, 60));
    REQUIRE(comes([&] { return arrived == 1; }));

    SUBCASE("frames are passed over until the picture is fetched")
    {
        const VideoFrame later = greyFrame(9);
        for (int i = 0; i < 20; ++i) {
            show(camera, later);
            CHECK(later.owner.use_count() == 1); // nobody keeps it to turn it
        }
        const QImage picture = layer.fetch();
        CHECK(picture.size() == QSize(30, 60));
        CHECK(picture.pixel(0, 0) == 0xFF0AC80A);
        CHECK(picture.pixel(29, 59) == 0xFF0AC80A);
        CHECK(layer.fetch().isNull());
        show(camera, threeColors(90, 60));
        REQUIRE(comes([&] { return arrived == 2; }));
    }
    SUBCASE("a tapped point is a point of the sensor")
    {
        const auto isAt = [&layer](QPointF tapped, QPointF expected) {
            const Point point = layer.captureDevicePointOfInterest(tapped);
            return QLineF(QPointF(point.x, point.y), expected).length() < 1e-9;
        };
        CHECK(isAt({15, 30}, {0.5, 0.5}));
        CHECK(isAt({0, 0}, {1 / 3.0, 0}));
        CHECK(isAt({30, 60}, {2 / 3.0, 1}));
        CHECK(isAt({90, -5}, {1, 0}));
    }
}

TEST_CASE("a preview takes what cameras give, and leaves the session when it goes")
{
    FakeSession camera{{}};
    {
        PreviewLayer layer(camera);
        CHECK(layer.captureDevicePointOfInterest({1, 1}).x == 0.5);
        layer.setBounds({16, 16}, 2.0);
        int arrived = 0;
        QObject::connect(&layer, &PreviewLayer::pictureArrived, &layer, [&] { ++arrived; });

        VideoFrame broken = threeColors(32, 32);
        broken.format = PixelFormat::Jpeg; // no JPEG at all: nothing is shown, and the next one is
        show(camera, broken);
        REQUIRE(comes([&] {
            show(camera, greyFrame(128)); // one pixel
            return arrived == 1;
        }));
        const QImage picture = layer.fetch();
        CHECK(picture.size() == QSize(32, 32));
        CHECK(picture.pixel(31, 31) == 0xFF808080);
        CHECK(camera.preview() != nullptr);
    }
    CHECK(camera.preview() == nullptr);
}

TEST_CASE("a light curve keeps five seconds and finds a scale for them")
{
    LightCurve curve;
    for (int i = 0; i <= 100; ++i)
        curve.append({i * 0.1, 0.1});
    CHECK(curve.samples().size() == 51);
    CHECK(curve.samples().front().uptimeSeconds == doctest::Approx(5.0));

    struct Row {
        double rise, bottom, top;
    };
    const Row rows[] = {
        {0.005, 0.1, 0.12}, {0.02, 0.1, 0.15}, {0.1, 0.09375, 0.34375}, {0.4, 0.0625, 0.5625}};
    for (const Row &row : rows) {
        CAPTURE(row.rise);
        curve.setRise(row.rise);
        CHECK(curve.range().bottom == doctest::Approx(row.bottom));
        CHECK(curve.range().top == doctest::Approx(row.top));
    }
    curve.append({10.1, 1.0}); // a burst: the newest and the rise on it are inside
    CHECK(curve.range().top >= 1.4);
    curve.append({2.0, 0.5}); // a new run, whose clock began anew
    CHECK(curve.samples().size() == 1);
}
