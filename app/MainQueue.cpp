#include "app/MainQueue.h"

#include <QCoreApplication>
#include <QEvent>
#include <QTimer>
#include <condition_variable>
#include <cstdlib>
#include <list>
#include <mutex>
#include <utility>

namespace skyflare {

namespace {

class WorkEvent final : public QEvent {
public:
    explicit WorkEvent(DispatchQueue::Work work) : QEvent(QEvent::User), work_(std::move(work)) {}
    void run() { std::exchange(work_, nullptr)(); }

private:
    DispatchQueue::Work work_;
};

/// Somebody who waits in sync(). Guarded by the core's mutex.
struct SyncCall {
    enum class Stage { Waiting, Running, Done, Abandoned };

    explicit SyncCall(const DispatchQueue::Work &callersWork) : work(callersWork) {}

    const DispatchQueue::Work &work; ///< the caller's; not looked at once the call is abandoned
    Stage stage = Stage::Waiting;
    std::condition_variable changed;
};

} // namespace

class MainQueue::Core final : public QObject, public std::enable_shared_from_this<Core> {
public:
    void async(Work work)
    {
        const std::scoped_lock lock(mutex_);
        post(std::move(work));
    }

    bool sync(const Work &work)
    {
        std::unique_lock lock(mutex_);
        if (isClosed_)
            return false;
        const auto call = std::make_shared<SyncCall>(work);
        calls_.push_back(call);
        post([this, call] { run(*call); });
        using Stage = SyncCall::Stage;
        call->changed.wait(lock,
                           [&] { return call->stage == Stage::Done || call->stage == Stage::Abandoned; });
        return call->stage == Stage::Done;
    }

    /// On main.
    void startTimer(std::chrono::nanoseconds delay, Work work)
    {
        // Never early.
        const auto wait = std::chrono::ceil<std::chrono::milliseconds>(delay);
        QTimer::singleShot(wait, Qt::PreciseTimer, this, [this, work = std::move(work)] {
            if (!isClosed())
                work();
        });
    }

    void close()
    {
        const std::scoped_lock lock(mutex_);
        isClosed_ = true;
        for (const auto &call : std::exchange(calls_, {})) {
            call->stage = SyncCall::Stage::Abandoned;
            call->changed.notify_all();
        }
    }

protected:
    void customEvent(QEvent *event) override { static_cast<WorkEvent *>(event)->run(); }

private:
    std::mutex mutex_;
    bool isClosed_ = false;
    std::list<std::shared_ptr<SyncCall>> calls_;

    // With mutex_ held: after close() nothing is posted.
    void post(Work work)
    {
        if (!isClosed_)
            QCoreApplication::postEvent(this,
                                        new WorkEvent(std::move(work))); // NOLINT: Qt's own from here on
    }

    bool isClosed()
    {
        const std::scoped_lock lock(mutex_);
        return isClosed_;
    }

    void run(SyncCall &call)
    {
        {
            const std::scoped_lock lock(mutex_);
            if (call.stage != SyncCall::Stage::Waiting)
                return;
            call.stage = SyncCall::Stage::Running;
            calls_.remove_if([&](const auto &one) { return one.get() == &call; });
        }
        call.work();
        const std::scoped_lock lock(mutex_);
        call.stage = SyncCall::Stage::Done;
        call.changed.notify_all();
    }
};

MainQueue::MainQueue() : SerialQueue("main"), core_(std::make_shared<Core>()) {}

MainQueue::~MainQueue()
{
    core_->close();
    QCoreApplication::removePostedEvents(core_.get());
}

void MainQueue::close()
{
    core_->close();
}

void MainQueue::async(Work work)
{
    core_->async(std::move(work));
}

bool MainQueue::sync(const Work &work)
{
    if (isCurrent())
        qFatal("sync to %s from its own thread would never end", label().c_str());
    const auto core = core_; // the queue may end while somebody goes home
    return core->sync(work);
}

void MainQueue::asyncAfter(std::chrono::nanoseconds delay, Work work)
{
    if (isCurrent()) {
        core_->startTimer(delay, std::move(work));
        return;
    }
    core_->async([core = core_.get(), delay, work = std::move(work)]() mutable {
        core->startTimer(delay, std::move(work));
    });
}

} // namespace skyflare
