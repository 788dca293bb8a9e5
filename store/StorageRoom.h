#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <mutex>

namespace skyflare {

/// How large the next photos will be, and so how many there is room for.
///
/// The next one is taken to be as large as the largest of the last eight that were stored. Before the first
/// one it is as large as a frame of the camera without compression, 3 bytes a pixel; before there is a frame,
/// as one of the smallest usual camera, 640 × 480. Room for one photo is kept back: the database writes each
/// photo into its log first, and from there into its file.
///
/// Threads: any.
class StorageRoom {
public:
    void photoStored(std::size_t bytes);
    void setFrameSize(int width, int height);

    /// @param freeBytes  on the file system of the store
    /// @return for how many photos that is enough, 0 or more
    [[nodiscard]] std::int64_t photosIn(std::uint64_t freeBytes) const;

private:
    static constexpr std::size_t remembered = 8;

    mutable std::mutex mutex_;                          // guards all below
    std::array<std::uint64_t, remembered> lastBytes_{}; ///< of stored photos, each at its turn; 0: none yet
    std::size_t turn_ = 0;
    std::uint64_t frameBytes_ = 640 * 480 * 3;

    [[nodiscard]] std::uint64_t nextBytes() const; ///< with the lock held
};

} // namespace skyflare
