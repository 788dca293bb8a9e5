#pragma once

#include "platform/linux/MessageBus.h"

#include <functional>
#include <string_view>
#include <vector>

namespace skyflare {

/// A service that wants a greeting before anything else: what is called of it waits until it has answered
/// that, with whatever it says. It is greeted with the first call, and each time that it is started anew.
///
/// Threads: the platform thread. Borrows the console.
class GreetedService {
public:
    /// Calls it, and gives the answer soon, on the platform thread.
    using Say = std::function<void(const BusCall &call, MessageBus::Answer answered)>;
    using Work = std::function<void()>;

    GreetedService(BusGreeting greeting, Say say, Console &console)
        : greeting_(std::move(greeting)), say_(std::move(say)), console_(console)
    {
    }

    /// Whether that call must wait.
    [[nodiscard]] bool holds(const BusCall &call) const;
    void whenGreeted(Work work);
    /// As the bus says it: by their names on it, empty where there is none.
    void ownerChanged(std::string_view oldOwner, std::string_view newOwner);
    /// The connection has gone; with the next one we are somebody else.
    void lose();
    /// What waits never comes to its turn.
    void forget() { waiting_.clear(); }

private:
    enum class State { Unsaid, Saying, Said };

    const BusGreeting greeting_;
    const Say say_;
    Console &console_;
    State state_ = State::Unsaid;
    unsigned turn_ = 0; ///< the number of the last greeting
    bool isReported_ = false;
    std::vector<Work> waiting_;

    void greet();
    void answered(unsigned turn, const Result<BusAnswer> &answer);
};

} // namespace skyflare
