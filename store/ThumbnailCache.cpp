#include "store/ThumbnailCache.h"

#include "platform/base/Files.h"

#include <system_error>

#include <algorithm>
#include <chrono>

namespace skyflare {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view extension = ".jpg";

/// What has another name is some process's half-written file; this old, that process has ended.
constexpr std::chrono::minutes leftoverAge{10};

bool isName(std::string_view uuid)
{
    constexpr std::size_t longest = 64;
    const auto fits = [](char letter) {
        return (letter >= '0' && letter <= '9') || (letter >= 'A' && letter <= 'Z') ||
               (letter >= 'a' && letter <= 'z') || letter == '-';
    };
    return !uuid.empty() && uuid.size() <= longest && std::ranges::all_of(uuid, fits);
}

fs::path fileOf(const fs::path &folder, std::string_view uuid)
{
    return folder / (std::string(uuid) + std::string(extension));
}

class ReducedFile final : public ReducedPicture {
public:
    explicit ReducedFile(fs::path file) : file_(std::move(file)) {}

    [[nodiscard]] std::shared_ptr<const Bytes> read() const override
    {
        auto bytes = readFile(file_);
        return bytes ? std::make_shared<const Bytes>(*std::move(bytes)) : nullptr;
    }
    void write(std::shared_ptr<const Bytes> jpeg) const override
    {
        static_cast<void>(replaceFile(file_, *jpeg, Durability::None));
    }

private:
    const fs::path file_;
};

bool isLeftover(const fs::directory_entry &entry)
{
    std::error_code gone;
    const auto written = entry.last_write_time(gone);
    return !gone && written < fs::file_time_type::clock::now() - leftoverAge;
}

void sweepFolder(const fs::path &folder, const std::function<bool(const std::string &uuid)> &isWanted)
{
    std::error_code failure;
    for (fs::directory_iterator entry(folder, failure), end; !failure && entry != end;
         entry.increment(failure)) {
        const fs::path &file = entry->path();
        const std::string uuid = file.stem().string();
        const bool goes =
            file.extension() == extension && isName(uuid) ? !isWanted(uuid) : isLeftover(*entry);
        std::error_code ignored;
        if (goes)
            fs::remove(file, ignored);
    }
}

} // namespace

std::shared_ptr<const ReducedPicture> ThumbnailCache::reducedPicture(std::string_view uuid) const
{
    if (!isName(uuid))
        return nullptr;
    return std::make_shared<const ReducedFile>(fileOf(folder_, uuid));
}

void ThumbnailCache::remove(std::string_view uuid)
{
    if (!isName(uuid))
        return;
    queue_.async([file = fileOf(folder_, uuid)] {
        std::error_code ignored;
        fs::remove(file, ignored);
    });
}

void ThumbnailCache::sweep(std::function<bool(const std::string &uuid)> isWanted)
{
    queue_.async([folder = folder_, isWanted = std::move(isWanted)] { sweepFolder(folder, isWanted); });
}

} // namespace skyflare
