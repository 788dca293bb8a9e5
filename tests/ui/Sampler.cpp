#include "tests/ui/Sampler.h"

#include "ui/SharedObject.h"

namespace skyflare {

Storyboard Sampler::storyboard()
{
    return {"Sampler", {{"SamplerView", QUrl("qrc:/Skyflare/Sampler/SamplerView.qml"), [] {
                             return makeShared<Sampler>();
                         }}}};
}

void Sampler::viewDidLoad()
{
    ++viewDidLoads;
    mainButton_.setText("Start");
    gearButton_.setSymbol("gear");
    gearButton_.setAccessibleName("Settings");
    statusText_.setText("Ready to capture fireworks...");
}

void Sampler::showPreview(CaptureSession *session)
{
    previewLayer_ = session != nullptr ? std::make_unique<PreviewLayer>(*session) : nullptr;
    emit previewChanged();
}

} // namespace skyflare
