#include "capture/CaptureManager.h"

#include "platform/base/Localization.h"
#include "platform/image/AreaAverage.h"

#include <cstdlib>
#include <utility>

namespace skyflare {

namespace {

std::optional<CaptureManager::Services> &sharedServices()
{
    static std::optional<CaptureManager::Services> services;
    return services;
}

} // namespace

CaptureManager::CaptureManager(Key, Services services)
    : services_(std::move(services)),
      // Deliberate: the widened float, so that the level's own threshold comes back exactly.
      brightnessThreshold_(static_cast<double>(services_.app.sensivity())),
      captureInterval_(services_.app.frequency())
{
}

std::shared_ptr<CaptureManager> CaptureManager::make(Services services)
{
    return std::make_shared<CaptureManager>(Key{}, std::move(services));
}

void CaptureManager::setSharedServices(const Services &services)
{
    sharedServices().emplace(services);
}

CaptureManager &CaptureManager::shared()
{
    static const std::shared_ptr<CaptureManager> manager = [] {
        if (!sharedServices())
            std::abort(); // setSharedServices() comes first
        return make(*sharedServices());
    }();
    return *manager;
}

// --- The session

void CaptureManager::start()
{
    assertOn(services_.mainQueue);
    setupCaptureSession();
    services_.mainQueue.asyncAfter(services_.armingDelay, [weak = weak_from_this()] {
        if (const auto manager = weak.lock())
            manager->setRunningStatus(true);
    });
}

void CaptureManager::setupCaptureSession()
{
    assertOn(services_.mainQueue);
    auto session = services_.framework.makeSession();
    replaceRun({session, nullptr});
    if (!session) {
        services_.console.printLine("Capture session oluşturulamadı.");
        return;
    }
    forwardEvents(session);
    session->beginConfiguration();
    if (!addVideoInput(*session)) {
        services_.console.printLine("Kamera giriş cihazı oluşturulamadı.");
        session->commitConfiguration();
        return;
    }
    auto videoQueue = services_.queues.makeSerialQueue("videoQueue");
    addVideoOutput(*session, videoQueue);
    addPhotoOutput(*session);
    session->commitConfiguration();

    replaceRun({session, videoQueue});
    startRunning(*videoQueue, session);
}

void CaptureManager::replaceRun(Run run)
{
    {
        const std::scoped_lock lock(mutex_);
        std::swap(run_, run);
    }
    // What was there before ends here, outside the lock: its session stops.
}

/// @return false if there is no camera to open; one that the session refuses is only reported.
bool CaptureManager::addVideoInput(CaptureSession &session)
{
    auto device = services_.framework.defaultDevice(DeviceType::BuiltInWideAngleCamera, DevicePosition::Back);
    if (!device)
        return false;
    const auto input = services_.framework.makeDeviceInput(std::move(device));
    if (!input)
        return false;
    if (!session.canAddInput(*input)) {
        services_.console.printLine("Video input eklenemedi.");
        return true;
    }
    session.addInput(*input);
    services_.console.printLine("Video input eklendi.");
    return true;
}

void CaptureManager::addVideoOutput(CaptureSession &session, const std::shared_ptr<SerialQueue> &videoQueue)
{
    auto output = std::make_shared<VideoDataOutput>();
    output->setSampleBufferDelegate(weak_from_this(), videoQueue);
    output->setAlwaysDiscardsLateVideoFrames(true);
    if (!session.canAddOutput(output)) {
        services_.console.printLine("Video output eklenemedi.");
        return;
    }
    session.addOutput(std::move(output));
    services_.console.printLine("Video output eklendi.");
}

void CaptureManager::addPhotoOutput(CaptureSession &session)
{
    auto output = services_.framework.makePhotoOutput();
    if (!session.canAddOutput(output)) {
        services_.console.printLine("Photo output eklenemedi.");
        return;
    }
    session.addOutput(std::move(output));
    services_.console.printLine("Photo output eklendi.");
}

void CaptureManager::startRunning(SerialQueue &videoQueue, const std::shared_ptr<CaptureSession> &session)
{
    videoQueue.async(
        [weak = weak_from_this(), weakSession = std::weak_ptr(session), console = &services_.console] {
            if (const auto manager = weak.lock()) {
                // Only its own: the next one may be half configured.
                const auto own = weakSession.lock();
                if (own && manager->captureSession() == own)
                    own->startRunning();
            }
            // Deliberate: printed also when there is nobody left to start.
            console->printLine("Capture session başlatıldı.");
        });
}

void CaptureManager::forwardEvents(const std::shared_ptr<CaptureSession> &session)
{
    session->setEventHandler([weak = weak_from_this(), from = std::weak_ptr(session),
                              mainQueue = &services_.mainQueue](const SessionEvent &event) {
        mainQueue->async([weak, from, event] {
            const auto manager = weak.lock();
            const auto sender = from.lock();
            if (!manager || !sender || manager->captureSession() != sender)
                return; // The news of a session that has been replaced.
            if (const auto viewController = manager->viewController())
                viewController->sessionDidChange(event);
        });
    });
}

std::shared_ptr<CaptureSession> CaptureManager::captureSession() const
{
    const std::scoped_lock lock(mutex_);
    return run_.session;
}

void CaptureManager::setViewController(std::weak_ptr<LightningCaptureManagerDelegate> viewController)
{
    const std::scoped_lock lock(mutex_);
    viewController_ = std::move(viewController);
}

std::shared_ptr<LightningCaptureManagerDelegate> CaptureManager::viewController() const
{
    const std::scoped_lock lock(mutex_);
    return viewController_.lock();
}

void CaptureManager::focus(Point at)
{
    assertOn(services_.mainQueue);
    const auto device = services_.framework.defaultVideoDevice();
    if (!device)
        return;
    if (const auto locked = device->lockForConfiguration(); !locked) {
        services_.console.printLine("Odak ayarlamada hata: " + locked.error().description());
        return;
    }
    device->setFocusPointOfInterest(at);
    device->setFocusMode(FocusMode::AutoFocus);
    device->unlockForConfiguration();
}

// --- Frames, on videoQueue

double CaptureManager::calculateBrightness(const VideoFrame &frame)
{
    return averageRed(frame).value_or(0) / 255.0;
}

bool CaptureManager::isOnVideoQueue() const
{
    std::shared_ptr<SerialQueue> videoQueue;
    {
        const std::scoped_lock lock(mutex_);
        videoQueue = run_.videoQueue;
    }
    return videoQueue && videoQueue->isCurrent();
}

void CaptureManager::didOutputSampleBuffer(const VideoFrame &frame)
{
    if (!isOnVideoQueue())
        return;
    if (!frame.hasImageBuffer()) {
        services_.console.printLine("Pixel buffer alınamadı.");
        return;
    }
    FrameMeasurement measured;
    measured.streamTime = frame.streamTime;
    measured.brightness = calculateBrightness(frame);
    updateLightPower(measured.brightness);

    measured.difference = measured.brightness - lastBrightness_.load(std::memory_order_relaxed);
    measured.triggered = runningStatus() && brightnessThreshold() < measured.difference;
    if (measured.triggered) {
        lastDifference_.store(static_cast<float>(measured.difference), std::memory_order_relaxed);
        measured.captured = capturePhoto();
    }
    lastBrightness_.store(measured.brightness, std::memory_order_relaxed);

    if (services_.frameMeasured)
        services_.frameMeasured(measured);
}

void CaptureManager::updateLightPower(double brightness)
{
    const bool shown = services_.mainQueue.sync([this, brightness] {
        if (const auto viewController = this->viewController())
            viewController->updateLightPower(brightness);
    });
    // A closed main queue has nobody left to show it to; the frame counts all the same.
    static_cast<void>(shown);
}

bool CaptureManager::capturePhoto()
{
    const double now = services_.clock.secondsSince1970();
    if (!(captureInterval() < now - lastCaptureTime_.load(std::memory_order_relaxed))) {
        services_.console.printLine("Fotoğraf çekme aralığına henüz ulaşılmadı.");
        return false;
    }
    // Deliberate: before the output is looked up, so that a trigger without one starts an interval too.
    lastCaptureTime_.store(now, std::memory_order_relaxed);

    auto output = photoOutput();
    if (!output) {
        services_.console.printLine("Photo output bulunamadı.");
        return true;
    }
    services_.queues.globalUserInitiated().async([weak = weak_from_this(), output = std::move(output)] {
        const auto manager = weak.lock();
        if (!manager)
            return;
        using SmallCopy = CapturePhotoSettings::SmallCopy;
        const bool isOfUse = manager->services_.photoDataManager.keepsThumbnails();
        output->capturePhoto({.smallCopy = isOfUse ? SmallCopy::Yes : SmallCopy::No}, manager);
        manager->services_.console.printLine("Fotoğraf çekme işlemi başlatıldı.");
    });
    return true;
}

std::shared_ptr<PhotoOutput> CaptureManager::photoOutput() const
{
    Run run;
    {
        const std::scoped_lock lock(mutex_);
        run = run_;
    }
    // A frame whose session has been replaced meanwhile has no output: the next session may still be in
    // the middle of its configuration.
    if (!run.session || !run.videoQueue || !run.videoQueue->isCurrent())
        return nullptr;
    for (const auto &output : run.session->outputs()) {
        if (auto photoOutput = std::dynamic_pointer_cast<PhotoOutput>(output))
            return photoOutput;
    }
    return nullptr;
}

// --- Photos, on a thread of the camera's

void CaptureManager::didFinishProcessingPhoto(const CapturePhoto &photo,
                                              const std::optional<Error> & /*error*/)
{
    // Deliberate: whether there is a photo decides, not the error.
    const auto encoded = photo.fileDataRepresentation();
    auto image = encoded ? Image::fromData(std::make_shared<MemoryBytes>(encoded))
                         : Result<Image>(Error{"camera", 0, "the photo has no data"});
    if (!image) {
        services_.console.printLine("Fotoğraf verisi alınamadı.");
        return;
    }
    if (photo.smallCopy)
        image = image->withReduced(std::make_shared<ReducedInMemory>(photo.smallCopy));
    services_.photoDataManager.saveImage(*image);
    const std::int64_t totalPhotos = services_.photoDataManager.photoCount();

    services_.mainQueue.async([manager = shared_from_this(), image = *image, totalPhotos] {
        const auto viewController = manager->viewController();
        if (!viewController)
            return;
        viewController->updateStatus(localized("Fireworks detected!"), 1, false);
        // Deliberate: the rise of the latest trigger, which need not be this photo's.
        viewController->didCapturePhoto(image, totalPhotos,
                                        manager->lastDifference_.load(std::memory_order_relaxed));
    });
}

} // namespace skyflare
