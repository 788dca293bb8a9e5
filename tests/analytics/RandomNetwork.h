#pragma once

#include "analytics/proto/APMMeasurementBundle.h"
#include "platform/net/NetworkMonitor.h"
#include "platform/net/PendingAnswer.h"
#include "tests/analytics/RandomCalls.h"

#include <map>
#include <set>
#include <string>
#include <utility>

namespace skyflare {

/// A collector, and a network before it that does whatever networks do.
class RandomNetwork final : public HttpTransport, public NetworkMonitor {
public:
    RandomNetwork(VirtualTime &time, RandomChoice &random) : time_(time), random_(random) {}

    bool isGood = false;            ///< every request is answered well, with the settings' defaults
    bool isUp = true;               ///< what the monitor says
    std::function<void()> atUpload; ///< for the next one, once the collector has dealt with it
    std::set<std::int64_t> numbers; ///< of the events that were received
    int duplicates = 0;             ///< bundles that came again
    std::uint64_t acknowledged = 0; ///< events of bundles that the engine was told of that they are safe

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
