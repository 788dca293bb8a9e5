#pragma once

#include "platform/linux/MessageBus.h"

#include <functional>
#include <memory>
#include <string>

namespace skyflare {

/// A name of ours on a bus, under which other programs find what we offer there. Given back at its end.
///
/// Offer first, then claim: the bus brings at once what it has kept for the name.
/// Threads: main. Shared: who lets go of it hears no more. Borrows the bus, whose queue is main.
class BusName final : public std::enable_shared_from_this<BusName> {
public:
    enum class Claim {
        Firm,    ///< taken from who yields; where another holds it, it is ours when that one goes
        Yielding ///< only where nobody has it, and until somebody claims it firmly
    };
    /// Ours, or why it is not (any more). Called with each change.
    using Changed = std::function<void(const Result<> &owned)>;

    [[nodiscard]] static std::shared_ptr<BusName> claim(MessageBus &bus, std::string name, Claim how,
                                                        Changed changed);
    ~BusName();
    /// Gives it back. Nothing is said of it any more; what was brought for it before is taken before
    /// `released`.
    void release(std::function<void()> released);
    BusName(const BusName &) = delete;
    BusName &operator=(const BusName &) = delete;

private:
    enum class State { Unknown, Ours, NotOurs };

    MessageBus &bus_;
    const std::string name_;
    const Changed changed_;
    State state_ = State::Unknown;
    bool isReleased_ = false;
    std::vector<MessageBus::Subscription> subscriptions_;

    BusName(MessageBus &bus, std::string name, Changed changed)
        : bus_(bus), name_(std::move(name)), changed_(std::move(changed))
    {
    }
    void listen();
    void request(Claim how);
    void become(State state, const Result<> &owned);
};

} // namespace skyflare
