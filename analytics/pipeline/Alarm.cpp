#include "analytics/pipeline/Alarm.h"

#include <algorithm>
#include <utility>

namespace skyflare {

Alarm::Alarm(WorkerTurns &worker, const Clock &clock, WorkerTurns::Work ring)
    : worker_(worker), clock_(clock), ring_(std::move(ring)), self_(std::make_shared<Alarm *>(this))
{
}

Alarm::~Alarm()
{
    *self_ = nullptr;
}

void Alarm::set(double due)
{
    due_ = due;
    if (!timerDue_ || due < *timerDue_)
        startTimer();
}

void Alarm::cancel()
{
    due_.reset();
}

void Alarm::startTimer()
{
    timerDue_ = due_;
    const std::chrono::duration<double> delay(std::max(*due_ - clock_.secondsOfUptime(), 0.0));
    worker_.performAfter(std::chrono::ceil<std::chrono::nanoseconds>(delay), [self = self_, due = *due_] {
        if (*self)
            (*self)->timerFired(due);
    });
}

void Alarm::timerFired(double timerDue)
{
    if (timerDue_ != timerDue)
        return; // an earlier one has taken its place
    timerDue_.reset();
    check();
    if (due_ && !timerDue_)
        startTimer();
}

void Alarm::check()
{
    if (!due_ || clock_.secondsOfUptime() < *due_)
        return;
    due_.reset();
    ring_();
}

} // namespace skyflare
