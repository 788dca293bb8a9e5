#include "platform/linux/GreetedService.h"

#include <utility>

namespace skyflare {

bool GreetedService::holds(const BusCall &call) const
{
    return call.service == greeting_.call.service && state_ != State::Said;
}

void GreetedService::whenGreeted(Work work)
{
    waiting_.push_back(std::move(work));
    if (state_ == State::Unsaid)
        greet();
}

void GreetedService::ownerChanged(std::string_view oldOwner, std::string_view newOwner)
{
    // Also one that was missing when it was greeted. One that the greeting itself has started is being
    // greeted.
    if (!oldOwner.empty() || state_ == State::Said)
        lose();
    const bool isKnown = turn_ > 0; // otherwise nothing has been called yet
    if (!newOwner.empty() && isKnown && state_ == State::Unsaid)
        greet();
}

void GreetedService::lose()
{
    state_ = State::Unsaid;
}

void GreetedService::greet()
{
    state_ = State::Saying;
    say_(greeting_.call, [this, turn = ++turn_](const Result<BusAnswer> &answer) { answered(turn, answer); });
}

void GreetedService::answered(unsigned turn, const Result<BusAnswer> &answer)
{
    if (turn != turn_)
        return;                    // from before it was started anew
    if (state_ == State::Saying) { // else it has gone, and what waits does not wait for the next one
        state_ = State::Said;
        if (!answer && !isMissing(answer.error()) && !std::exchange(isReported_, true))
            console_.reportLine(greeting_.refused + answer.error().message);
    }
    for (const Work &work : std::exchange(waiting_, {}))
        work();
}

} // namespace skyflare
