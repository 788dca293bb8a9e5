#pragma once

#include "platform/net/CurlTransfer.h"
#include "platform/net/PendingAnswer.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace skyflare {

/// The thread on which libcurl carries out requests, any number at once. It begins with the first request,
/// and sleeps while there is none.
///
/// Threads: any; made and closed by its owner.
class CurlLoop {
public:
    explicit CurlLoop(std::filesystem::path certificateAuthorities);
    CurlLoop(const CurlLoop &) = delete;
    CurlLoop &operator=(const CurlLoop &) = delete;
    ~CurlLoop();

    /// @return the request's number
    std::uint64_t add(HttpRequest request, std::shared_ptr<PendingAnswer> answer);
    /// Ends the request of that number, if it is still under way. Its answer is not delivered.
    void remove(std::uint64_t number);

    /// Answers what is under way with Cancelled, and everything that still comes. Waits for the thread,
    /// which never waits for the network.
    void close();

private:
    struct Order {
        std::uint64_t number;
        HttpRequest request;
        std::shared_ptr<PendingAnswer> answer;
    };
    struct Running {
        std::unique_ptr<CurlTransfer> transfer;
        std::shared_ptr<PendingAnswer> answer;
    };

    const std::filesystem::path certificateAuthorities_;

    std::mutex mutex_;
    std::uint64_t nextNumber_ = 1;
    std::vector<Order> added_;
    std::vector<std::uint64_t> removed_;
    bool closed_ = false;
    bool isServed_ = false; ///< by a thread that will look at added_ again
    CurlMulti multi_;       ///< made and ended by the thread, which alone uses it but for wake-ups
    std::thread thread_;

    std::map<std::uint64_t, Running> running_; ///< the thread's own

    void wakeUp();
    void run();
    bool openMulti();
    bool takeOrders();
    void start(Order order);
    void finishEnded();
    void end(const Error &why);
};

} // namespace skyflare
