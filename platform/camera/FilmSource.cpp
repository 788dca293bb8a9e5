#include "platform/camera/FilmSource.h"

#include "platform/camera/FilmFile.h"
#include "platform/camera/FilmStream.h"
#include "platform/camera/GstSetup.h"

namespace skyflare {

FilmSource::FilmSource(std::filesystem::path path, Pacing pacing) : path_(std::move(path)), pacing_(pacing) {}

Result<> FilmSource::lockForConfiguration()
{
    if (isLocked_.exchange(true))
        return Error{"camera", 0, localizedName() + " is being configured by somebody else"};
    return {};
}

Result<Element> FilmSource::makeElement() const
{
    if (const auto ready = initialiseGStreamer(); !ready)
        return ready.error();
    const auto file = FilmFile::inspect(path_);
    if (!file)
        return file.error();
    std::error_code failure;
    const auto absolute = std::filesystem::absolute(path_, failure);
    const GLibText uri(failure ? nullptr : gst_filename_to_uri(absolute.c_str(), nullptr));
    if (!uri)
        return Error{"film", 0, path_.string() + ": there is no such file"};
    return FilmStream::make(uri.get(), localizedName(), *file);
}

} // namespace skyflare
