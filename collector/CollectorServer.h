#pragma once

#include "collector/Collector.h"
#include "collector/ServedSettings.h"

#include <cstdint>
#include <memory>
#include <string>

namespace skyflare {

/// HTTP in front of a Collector: "/a", the configuration path, "/health".
///
/// Threads: made and stopped on one; it answers on a thread of its own. Borrows its services.
class CollectorServer {
public:
    struct Services {
        Collector &collector;
        const ServedSettings &settings;
        const Clock &clock;
    };

    struct Options {
        std::string address = "127.0.0.1";  ///< IPv4 or IPv6, in numbers
        std::uint16_t port = 8765;          ///< 0: any that is free
        std::size_t bodyBytes = 12'582'912; ///< of a request
        unsigned connections = 256;         ///< at the same time
        double requestSeconds = 30;         ///< for a request to come whole, and between two
    };

    struct State; ///< shared with the library's thread

    static Result<std::unique_ptr<CollectorServer>> start(const Services &services, const Options &options);
    /// For start(): takes over what listens.
    explicit CollectorServer(std::unique_ptr<State> state);
    CollectorServer(const CollectorServer &) = delete;
    CollectorServer &operator=(const CollectorServer &) = delete;
    ~CollectorServer();

    [[nodiscard]] int port() const;
    /// To be called every second or so.
    void hangUpOnSlowClients();
    /// Takes no new request, lets those that are under way come to their end for a while, and has the
    /// collector finish.
    void stop();

private:
    std::unique_ptr<State> state_;
};

} // namespace skyflare
