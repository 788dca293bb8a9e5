#pragma once

#include "platform/camera/CameraSource.h"

#include <atomic>
#include <filesystem>

namespace skyflare {

/// A recorded film as a camera: its first picture track; sound and the rest are left alone.
///
/// What is wrong with a film is said when it is started: by makeElement(), or by the running element in an
/// error that names the file.
/// Threads: any.
class FilmSource final : public CameraSource {
public:
    /// @param pacing  RealTime plays at the film's own speed, LockStep gives every picture.
    FilmSource(std::filesystem::path path, Pacing pacing);

    [[nodiscard]] std::string localizedName() const override { return path_.filename().string(); }
    [[nodiscard]] DevicePosition position() const override { return DevicePosition::Unspecified; }
    /// Not known before the film is open.
    [[nodiscard]] std::vector<CaptureFormat> formats() const override { return {}; }

    Result<> lockForConfiguration() override;
    /// A film is as sharp as it was taken.
    void setFocusPointOfInterest(Point) override {}
    void setFocusMode(FocusMode) override {}
    void unlockForConfiguration() override { isLocked_ = false; }

    Result<Element> makeElement() const override;
    [[nodiscard]] Pacing pacing() const override { return pacing_; }

private:
    std::filesystem::path path_;
    Pacing pacing_;
    std::atomic<bool> isLocked_ = false;
};

} // namespace skyflare
