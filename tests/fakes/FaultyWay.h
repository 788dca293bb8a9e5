#pragma once

#include "tests/fakes/HttpServer.h"

#include <array>
#include <atomic>
#include <functional>
#include <string>

namespace skyflare {

/// The way from an engine to its collector, on which an upload may meet a fault, and either end may die while
/// one is on it. What else is asked passes.
///
/// Threads: the test's; the hooks run on the server's own, where one request after the other is passed on.
class FaultyWay {
public:
    enum class Fault {
        None,
        Reset,      ///< the engine's connection breaks before the collector hears of it
        CutRequest, ///< both connections break in the middle of the body
        LostAnswer, ///< the collector has taken it, and the engine's connection breaks
        Silence,    ///< nothing goes on, and nothing comes back
        Drip,       ///< the answer comes byte by byte
        ServerError,
        NoContent, ///< 204 in place of the collector's 200
    };
    static constexpr std::size_t faultCount = 8;
    /// How far an upload has come on the collector's side.
    enum class Stage { Arrived, HalfSent, Sent, Answered };
    static constexpr std::size_t stageCount = 4;

    struct Hooks {
        std::function<Fault()> fault; ///< of the next upload
        std::function<void(Stage)> reached;
    };

    explicit FaultyWay(Hooks hooks);

    void setCollectorPort(int port) { collectorPort_ = port; }
    /// Until then connections are refused.
    void open() { server_.listen(); }
    [[nodiscard]] std::string host() const { return server_.url(""); }

private:
    const Hooks hooks_;
    std::atomic<int> collectorPort_ = 0;
    HttpServer server_; ///< last: its thread uses the rest

    [[nodiscard]] HttpServer::Answer pass(const HttpServer::Request &request) const;
};

} // namespace skyflare
