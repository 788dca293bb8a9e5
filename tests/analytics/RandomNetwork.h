#pragma once

#include "analytics/proto/APMMeasurementBundle.h"
#include "platform/net/NetworkMonitor.h"
#include "platform/net/PendingAnswer.h"
#include "tests/fakes/VirtualTime.h"

#include <initializer_list>
#include <map>
#include <random>
#include <set>
#include <string>
#include <utility>

namespace skyflare {

class RandomChoice {
public:
    explicit RandomChoice(std::uint64_t seed) : random_(seed) {}

    std::size_t below(std::size_t limit) { return random_() % limit; }
    bool isOne(std::size_t in) { return below(in) == 0; }
    template <typename T> T oneOf(std::initializer_list<T> all) { return all.begin()[below(all.size())]; }

private:
    std::mt19937_64 random_;
};

/// A collector, and a network before it that does whatever networks do.
class RandomNetwork final : public HttpTransport, public NetworkMonitor {
public:
    RandomNetwork(VirtualTime &time, RandomChoice &random) : time_(time), random_(random) {}

    bool isGood = false;            ///< every request is answered well, with the settings' defaults
    bool isUp = true;               ///< what the monitor says
    std::function<void()> atUpload; ///< for the next one, once the collector has dealt with it
    std::set<std::int64_t> numbers; ///< of the events that were received
    int duplicates = 0;             ///< bundles that came again

    [[nodiscard]] std::unique_ptr<HttpTask> send(HttpRequest request, DispatchQueue &queue,
                                                 Completion completion) override;
    [[nodiscard]] bool isConnected() const override { return isUp; }
    void observe(std::function<void()> changed) override { changed_ = std::move(changed); }
    void setUp(bool up)
    {
        if (isUp != std::exchange(isUp, up) && changed_)
            changed_();
    }
    /// The engine begins, or dies: what is under way is never answered.
    void begin() { isDead_ = false; }
    void die()
    {
        isDead_ = true;
        ++life_;
        inFlight_.clear();
    }
    /// The engine does not want to hear of what is under way.
    void forget() { inFlight_.clear(); }
    [[nodiscard]] bool isInFlight() const { return !inFlight_.empty(); }
    /// Events of bundles that the engine was told of that they are safe.
    [[nodiscard]] std::uint64_t acknowledged() const { return acknowledged_; }

private:
    struct Outcome {
        bool isTaken;
        int status; ///< or what follows
    };
    static constexpr int isUnreachable = 0;
    static constexpr int isSilent = -1;

    /// Cancels nothing: what comes for one that has gone is for nobody.
    struct Task final : HttpTask {};

    VirtualTime &time_;
    RandomChoice &random_;
    std::function<void()> changed_;
    std::map<std::string, APMMeasurementBundle> bundles_;
    std::set<std::string> inFlight_; ///< keys of the bundles that an answer is under way for
    std::uint64_t acknowledged_ = 0;
    bool isDead_ = true;
    int life_ = 0;

    Outcome outcome();
    std::set<std::string> take(const HttpRequest &request, bool isTaken);
    void takeBundle(const std::string &key, APMMeasurementBundle bundle);
    std::string settings();
    void answerLater(std::shared_ptr<PendingAnswer> answer, const HttpRequest &request, int status,
                     std::string body = {});
};

} // namespace skyflare
