#pragma once

#include "platform/base/Bytes.h"

#include <atomic>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

namespace skyflare::bench {

/// Phones that send one batch after the other to a collector on this machine, as fast as it answers.
///
/// A batch is encoded and compressed once. Each time only its bundle's index is put in anew, in a stored
/// block at the end of the gzip stream, so that the load costs next to nothing. Threads: made and ended on
/// one; one a phone.
class CollectorLoad {
public:
    static constexpr int phones = 48;
    static constexpr int eventsABatch = 500; ///< about 64 KiB, an engine's usual limit

    explicit CollectorLoad(int port);
    CollectorLoad(const CollectorLoad &) = delete;
    CollectorLoad &operator=(const CollectorLoad &) = delete;
    /// Waits for the last answers.
    ~CollectorLoad();

    /// Answered with 200; anything else ends the program.
    [[nodiscard]] std::uint64_t events() const { return batches_ * eventsABatch; }
    [[nodiscard]] std::size_t bytesABatch() const { return bytesABatch_; }

private:
    const int port_;
    std::atomic<bool> isEnding_ = false;
    std::atomic<std::uint64_t> batches_ = 0;
    std::size_t bytesABatch_ = 0; ///< on the wire
    std::vector<std::thread> threads_;

    void send(const Bytes &plain);
};

} // namespace skyflare::bench
