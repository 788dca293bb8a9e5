#include "platform/camera/CaptureRun.h"

#include <system_error>

#include <cstdio>
#include <thread>

namespace skyflare {

using namespace std::chrono_literals;

namespace {

constexpr auto startLimit = 5s;
constexpr auto stopLimit = 3s;
constexpr auto silenceTurn = 500ms;
constexpr int silentTurnsAllowed = 3; ///< 1.5 s

} // namespace

CaptureRun::CaptureRun(Parts parts)
    : parts_(std::move(parts)),
      name_(parts_.source->localizedName()),
      isLive_(parts_.source->pacing() == Pacing::Live)
{
}

void CaptureRun::start()
{
    watchForRemoval();
    // Not a queue: a driver or a server may never answer, and a queue's end would wait for it.
    auto work = [self = shared_from_this(), graph = parts_.graphs->add()]() mutable {
        self->runGraph();
        self.reset();
        graph.reset();
    };
    try {
        std::thread(std::move(work)).detach();
    } catch (const std::system_error &failure) {
        finish(event(Kind::Failed, name_ + ": there is no thread for it: " + failure.what()));
        reportDown({});
        return;
    }
    watchForSilence(-1, 0);
    std::unique_lock lock(mutex_);
    const auto isDecided = [this] { return hasFrames_ || isStreamOver_ || isOver_; };
    const bool inTime = changed_.wait_for(lock, startLimit, isDecided);
    lock.unlock();
    if (!inTime && waitsForDevice_)
        finish(event(Kind::Failed, name_ +
                                       " is still in use by the run before, which hangs: unplug it and plug "
                                       "it in again, or start the program anew"));
    else if (!inTime && isLive_) // A film may take longer to be found: it is a file and does not hang.
        finish(event(Kind::Failed, name_ + " gives no pictures"));
}

void CaptureRun::stop()
{
    finish({});
}

bool CaptureRun::isOver() const
{
    const std::scoped_lock lock(mutex_);
    return isOver_;
}

void CaptureRun::watchForRemoval()
{
    removal_ = parts_.source->whenRemoved([weak = weak_from_this()] {
        if (const auto self = weak.lock())
            self->noteFault(self->name_ + " is gone: it was unplugged or switched off");
    });
}

void CaptureRun::runGraph()
{
    auto device = takeDevice();
    std::unique_ptr<CaptureGraph> graph;
    if (!isOver())
        buildAndPlay(graph);
    {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return isOver_; });
    }
    graph.reset();
    device.reset();
    // Here, not with the run, whose last owner may be the removal itself.
    removal_.reset();
    reportDown({});
}

std::shared_ptr<void> CaptureRun::takeDevice()
{
    waitsForDevice_ = true;
    auto device = parts_.graphs->take(parts_.source->identity(), [this] { return isOver(); });
    waitsForDevice_ = false;
    return device;
}

void CaptureRun::buildAndPlay(std::unique_ptr<CaptureGraph> &graph)
{
    auto built = CaptureGraph::build(*parts_.source, *this);
    if (!built) {
        finish(event(Kind::Failed, built.error().message));
        return;
    }
    graph = std::move(*built);
    if (!graph->play())
        finish(event(Kind::Failed, name_ + " cannot be started"));
}

bool CaptureRun::sampleArrived(Sample sample)
{
    const CaptureFormat format = pictures_ == 0 ? FrameReader::formatOf(sample.get()) : CaptureFormat();
    const VideoFrame frame = reader_.read(std::move(sample));
    streamSeconds_ = std::chrono::duration<double>(frame.streamTime).count();
    if (frame.hasImageBuffer())
        notePicture(frame, format);
    return parts_.delivery->arrived(frame);
}

// A camera may begin with frames that hold nothing: it has started when the first picture is there.
void CaptureRun::notePicture(const VideoFrame &frame, CaptureFormat format)
{
    if (++pictures_ > 1)
        return;
    SessionEvent started = event(Kind::Started);
    started.format = {frame.width, frame.height, format.framesPerSecond};
    {
        const std::scoped_lock lock(mutex_);
        hasFrames_ = true;
        if (!isOver_)
            report(std::move(started));
    }
    changed_.notify_all();
}

void CaptureRun::streamEnded()
{
    {
        const std::scoped_lock lock(mutex_);
        isStreamOver_ = true;
    }
    changed_.notify_all();
    if (parts_.frameQueue)
        parts_.frameQueue->async([self = shared_from_this()] { self->endStream(); });
    else
        endStream();
}

void CaptureRun::endStream()
{
    SessionEvent ending = isLive_ ? event(Kind::Lost, name_ + " gives no more pictures") : event(Kind::Ended);
    {
        const std::scoped_lock lock(mutex_);
        if (isLive_ && !hasFrames_)
            ending = event(Kind::Failed, name_ + " gives no pictures");
        if (failure_)
            ending = event(Kind::Failed, lineFor(*failure_));
    }
    finish(std::move(ending));
}

void CaptureRun::errorReported(const GraphError &error)
{
    std::unique_lock lock(mutex_);
    // A film is read ahead of what is shown: the pictures before the fault still count.
    if (!isLive_ && error.isAfterOpening && !isStreamOver_) {
        if (!failure_)
            failure_ = error;
        return;
    }
    const std::string line = lineFor(error);
    lock.unlock();
    noteFault(line);
}

void CaptureRun::noteFault(const std::string &line)
{
    std::unique_lock lock(mutex_);
    const Kind kind = isLive_ && hasFrames_ ? Kind::Lost : Kind::Failed;
    lock.unlock();
    finish(event(kind, line));
}

void CaptureRun::finish(std::optional<SessionEvent> ending)
{
    {
        const std::scoped_lock lock(mutex_);
        if (isOver_)
            return;
        isOver_ = true;
        if (ending)
            report(*ending);
    }
    changed_.notify_all();
    parts_.graphs->wake();
    parts_.delivery->close();
    parts_.stills->close(name_ + " gives no more pictures");
    parts_.controlQueue->asyncAfter(stopLimit, [weak = weak_from_this()] {
        if (const auto self = weak.lock())
            self->reportDown(self->name_ + " does not stop; it is left behind");
    });
}

void CaptureRun::reportDown(const std::string &message)
{
    const std::scoped_lock lock(mutex_);
    if (!std::exchange(isReportedDown_, true))
        report(event(Kind::Stopped, message));
}

// A camera that is pulled out, or whose server dies, often says nothing: no error, no end of its stream.
// Nor does every part of a film's graph pass on the end after a fault. Frames that hold
// no picture are silence too.
void CaptureRun::watchForSilence(std::int64_t pictures, int silentTurns)
{
    const std::int64_t picturesNow = pictures_;
    const bool isSilent = picturesNow == pictures && !parts_.delivery->isBusy();
    const int turns = isSilent ? silentTurns + 1 : 0;
    std::optional<SessionEvent> ending;
    {
        const std::scoped_lock lock(mutex_);
        if (isOver_)
            return;
        if (turns >= silentTurnsAllowed && failure_)
            ending = event(Kind::Failed, lineFor(*failure_));
    }
    if (turns >= silentTurnsAllowed && isLive_ && picturesNow > 0)
        ending = event(Kind::Lost, name_ + " gives no more pictures");
    if (ending) {
        finish(std::move(ending));
        return;
    }
    parts_.controlQueue->asyncAfter(silenceTurn, [weak = weak_from_this(), picturesNow, turns] {
        if (const auto self = weak.lock())
            self->watchForSilence(picturesNow, turns);
    });
}

void CaptureRun::report(SessionEvent event) const
{
    if (parts_.eventHandler)
        parts_.controlQueue->async(
            [handler = parts_.eventHandler, event = std::move(event)] { handler(event); });
}

SessionEvent CaptureRun::event(Kind kind, std::string message) const
{
    return {kind, name_, std::move(message), {}};
}

std::string CaptureRun::lineFor(const GraphError &error) const
{
    if (error.isWhole)
        return error.line;
    std::string line = name_ + ": " + error.line;
    if (hasFrames_ && !isLive_) {
        char time[32];
        std::snprintf(time, sizeof time, " (at %.1f s)", streamSeconds_.load());
        line += time;
    }
    return line;
}

} // namespace skyflare
