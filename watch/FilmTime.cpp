#include "watch/FilmTime.h"

#include <algorithm>
#include <cmath>

namespace skyflare {

using std::chrono::nanoseconds;

FilmTime::FilmTime(SerialQueue &main, std::function<void()> drainStills, double startSecondsSince1970)
    : main_(main),
      drainStills_(std::move(drainStills)),
      startSeconds_(std::floor(startSecondsSince1970)),
      queue_(*this, main)
{
}

double FilmTime::secondsSince1970() const
{
    return startSeconds_ + secondsOfUptime();
}

double FilmTime::secondsOfUptime() const
{
    return std::chrono::duration<double>(now_.load()).count();
}

void FilmTime::willDeliver(nanoseconds streamTime)
{
    // A main queue that is closed runs nothing any more: then there is nobody left to be on time for.
    (void)main_.sync([this, streamTime] { runWhatIsDue(streamTime); });
}

void FilmTime::runWhatIsDue(nanoseconds streamTime)
{
    for (;;) {
        DispatchQueue::Work work;
        {
            const std::lock_guard lock(mutex_);
            const auto next = delayed_.begin();
            if (next == delayed_.end() || next->first > streamTime)
                break;
            now_ = std::max(now_.load(), next->first);
            work = std::move(next->second);
            delayed_.erase(next);
        }
        work();
    }
    now_ = streamTime;
}

void FilmTime::didDeliver()
{
    drainStills_();
    (void)main_.sync([] {}); // what the stills have handed to main stood before this
}

void FilmTime::Queue::asyncAfter(nanoseconds delay, Work work)
{
    const std::lock_guard lock(time_.mutex_);
    time_.delayed_.emplace(time_.now_.load() + delay, std::move(work));
}

} // namespace skyflare
