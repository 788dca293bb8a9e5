#include "platform/camera/FilmFile.h"

#include <system_error>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <fstream>
#include <optional>
#include <string_view>

namespace skyflare {

namespace {

/// Reads numbers at places of a file.
class FileReader {
public:
    FileReader(std::ifstream &file, std::uint64_t size) : file_(file), size_(size) {}

    [[nodiscard]] std::uint64_t size() const { return size_; }

    /// Nothing where the file has not that many bytes there.
    template <std::size_t count> std::optional<std::array<std::uint8_t, count>> bytes(std::uint64_t offset)
    {
        std::array<std::uint8_t, count> read{};
        if (offset > size_ || size_ - offset < count)
            return {};
        file_.clear();
        file_.seekg(static_cast<std::streamoff>(offset));
        file_.read(reinterpret_cast<char *>(read.data()), count);
        return file_ ? std::optional(read) : std::nullopt;
    }

private:
    std::ifstream &file_;
    std::uint64_t size_;
};

template <std::size_t count> std::uint64_t bigEndian(const std::array<std::uint8_t, count> &bytes)
{
    std::uint64_t number = 0;
    for (const std::uint8_t byte : bytes)
        number = number << 8U | byte;
    return number;
}

std::string_view text(const std::array<std::uint8_t, 4> &bytes)
{
    return {reinterpret_cast<const char *>(bytes.data()), bytes.size()};
}

constexpr std::array<std::string_view, 7> firstBoxes{"ftyp", "moov", "mdat", "wide", "free", "skip", "pnot"};

struct Box {
    std::array<std::uint8_t, 4> type{};
    std::uint64_t size = 0; ///< header included; 0 = to the end of the file
};

std::optional<Box> boxAt(FileReader &file, std::uint64_t offset)
{
    const auto size = file.bytes<4>(offset);
    const auto type = file.bytes<4>(offset + 4);
    if (!size || !type)
        return {};
    Box box{*type, bigEndian(*size)};
    if (box.size == 1) {
        const auto largeSize = file.bytes<8>(offset + 8);
        if (!largeSize)
            return {};
        box.size = bigEndian(*largeSize);
    }
    return box;
}

struct BoxFacts {
    bool isCutShort = false;
    bool hasIndex = false;
};

/// Nothing where the file is no chain of boxes.
std::optional<BoxFacts> walkBoxes(FileReader &file)
{
    const auto first = file.bytes<4>(4);
    if (!first || std::find(firstBoxes.begin(), firstBoxes.end(), text(*first)) == firstBoxes.end())
        return {};
    BoxFacts facts;
    std::uint64_t offset = 0;
    while (offset < file.size()) {
        const auto box = boxAt(file, offset);
        if (!box) {
            facts.isCutShort = true;
            break;
        }
        const std::uint64_t left = file.size() - offset;
        const bool reachesBeyond = box->size > left;
        facts.hasIndex = facts.hasIndex || (text(box->type) == "moov" && !reachesBeyond);
        facts.isCutShort = facts.isCutShort || reachesBeyond;
        // Anything smaller than a header is no box: leave what follows to the demuxer.
        if (box->size < 8 || reachesBeyond)
            break;
        offset += box->size;
    }
    return facts;
}

/// An EBML number: the first byte's leading zeros say how many bytes follow it.
struct EbmlNumber {
    std::uint64_t value = 0;
    std::uint64_t length = 0; ///< bytes
    bool isUnknown = false;   ///< all ones: a live recording
};

std::optional<EbmlNumber> ebmlNumberAt(FileReader &file, std::uint64_t offset)
{
    const auto first = file.bytes<1>(offset);
    if (!first || (*first)[0] == 0)
        return {};
    EbmlNumber number{(*first)[0], 1};
    std::uint64_t marker = 0x80;
    for (; (number.value & marker) == 0; marker >>= 1U)
        ++number.length;
    number.value &= marker - 1;
    std::uint64_t allOnes = marker - 1;
    for (std::uint64_t index = 1; index < number.length; ++index) {
        const auto next = file.bytes<1>(offset + index);
        if (!next)
            return {};
        number.value = number.value << 8U | (*next)[0];
        allOnes = allOnes << 8U | 0xFF;
    }
    number.isUnknown = number.value == allOnes;
    return number;
}

bool isMatroskaCutShort(FileReader &file)
{
    const auto signature = file.bytes<4>(0);
    if (!signature || bigEndian(*signature) != 0x1A45DFA3)
        return false;
    const auto header = ebmlNumberAt(file, 4);
    if (!header)
        return true;
    const std::uint64_t segment = 4 + header->length + header->value;
    const auto segmentId = file.bytes<4>(segment);
    if (!segmentId || bigEndian(*segmentId) != 0x18538067)
        return !segmentId;
    const auto size = ebmlNumberAt(file, segment + 4);
    if (!size)
        return true;
    return !size->isUnknown && size->value > file.size() - (segment + 4 + size->length);
}

std::uint64_t littleEndian(std::array<std::uint8_t, 4> bytes)
{
    std::reverse(bytes.begin(), bytes.end());
    return bigEndian(bytes);
}

/// The main header comes first and starts with the time from one picture to the next; their number is its
/// fifth field.
std::optional<std::chrono::nanoseconds> aviLength(FileReader &file)
{
    const auto header = file.bytes<4>(24);
    const auto microsecondsPerPicture = file.bytes<4>(32);
    const auto pictures = file.bytes<4>(48);
    if (!pictures || !microsecondsPerPicture || text(*header) != "avih")
        return {};
    return std::chrono::microseconds(littleEndian(*microsecondsPerPicture) * littleEndian(*pictures));
}

bool isAvi(FileReader &file)
{
    const auto form = file.bytes<4>(8);
    return form && text(*form) == "AVI ";
}

bool isAviCutShort(FileReader &file)
{
    // A long AVI is a chain of RIFF chunks.
    for (std::uint64_t offset = 0; offset < file.size();) {
        const auto id = file.bytes<4>(offset);
        const auto size = file.bytes<4>(offset + 4);
        if (!id || text(*id) != "RIFF" || !size)
            return false;
        const std::uint64_t length = littleEndian(*size);
        if (length > file.size() - offset - 8)
            return true;
        offset += 8 + length + length % 2;
    }
    return false;
}

Error filmError(const std::filesystem::path &path, const std::string &what)
{
    return {"film", 0, path.string() + ": " + what, {{"path", path.string()}}};
}

Result<> checkKind(const std::filesystem::path &path)
{
    std::error_code failure;
    const auto status = std::filesystem::status(path, failure);
    if (status.type() == std::filesystem::file_type::not_found)
        return filmError(path, "there is no such file");
    if (failure == std::errc::permission_denied)
        return filmError(path, "there is no permission to read it");
    if (failure)
        return filmError(path, "it cannot be read: " + failure.message());
    if (status.type() == std::filesystem::file_type::directory)
        return filmError(path, "this is a folder, not a film");
    if (status.type() != std::filesystem::file_type::regular)
        return filmError(path, "this is not a file with a film in it");
    return {};
}

} // namespace

Result<FilmFile> FilmFile::inspect(const std::filesystem::path &path)
{
    if (const auto kind = checkKind(path); !kind)
        return kind.error();
    std::ifstream stream(path, std::ios::binary);
    if (!stream) {
        const int reason = errno;
        return filmError(path, reason == EACCES
                                   ? "there is no permission to read it"
                                   : "it cannot be read: " + std::generic_category().message(reason));
    }
    std::error_code failure;
    const std::uint64_t size = std::filesystem::file_size(path, failure);
    if (failure)
        return filmError(path, "it cannot be read: " + failure.message());
    if (size == 0)
        return filmError(path, "the file is empty");
    FileReader file(stream, size);
    const auto boxes = walkBoxes(file);
    if (boxes && !boxes->hasIndex)
        return filmError(path, "the film is incomplete: the file ends without its index");
    if (boxes)
        return FilmFile{boxes->isCutShort};
    if (isAvi(file))
        return FilmFile{isAviCutShort(file), aviLength(file)};
    return FilmFile{isMatroskaCutShort(file)};
}

} // namespace skyflare
