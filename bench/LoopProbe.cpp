#include "bench/LoopProbe.h"

#include "bench/Machine.h"

#include <QCoreApplication>
#include <QEvent>
#include <chrono>

namespace skyflare::bench {

void LoopProbe::start()
{
    isWatching_ = true;
    poster_ = std::thread([this] { post(); });
}

void LoopProbe::stop()
{
    isWatching_ = false;
    if (poster_.joinable())
        poster_.join();
    QCoreApplication::removePostedEvents(this);
}

void LoopProbe::post()
{
    while (isWatching_) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        if (isWaiting_)
            continue;
        isWaiting_ = true;
        postedAt_ = now();
        QCoreApplication::postEvent(this, new QEvent(QEvent::User)); // NOLINT: Qt's own from here on
    }
}

void LoopProbe::customEvent(QEvent * /*event*/)
{
    delays_.push_back(now() - postedAt_);
    isWaiting_ = false;
}

} // namespace skyflare::bench
