#include "tests/ui/Sampler.h"

#include "ui/SharedObject.h"

#include <QDir>
#include <cmath>

namespace skyflare {

Storyboard Sampler::storyboard()
{
    return {
        "Sampler",
        {{"SamplerView", QUrl("qrc:/Skyflare/Sampler/SamplerView.qml"), [] { return makeShared<Sampler>(); }},
         {"PlainView", QUrl("qrc:/Skyflare/Sampler/PlainView.qml"), [] { return makeShared<PlainScreen>(); }},
         {"NoView", QUrl("qrc:/Skyflare/Sampler/NoView.qml"), [] { return makeShared<PlainScreen>(); }}}};
}

void Sampler::viewDidLoad()
{
    ++viewDidLoads;
    mainButton_.setText("Start");
    gearButton_.setSymbol("gear");
    gearButton_.setAccessibleName("Settings");
    lightPowerLabel_.setText("0.31");
    statusText_.setText("Ready to capture fireworks...");
    lightCurve_.setRise(0.1);
    for (int i = 0; i <= 150; ++i) {
        const double seconds = i / 30.0;
        const double sinceBurst = std::fmod(seconds + 0.9, 2.3);
        lightCurve_.append({seconds, 0.06 + 0.004 * std::sin(i * 1.7) + 0.22 * std::exp(-3 * sinceBurst)});
    }
}

void Sampler::showPreview(CaptureSession *session)
{
    previewLayer_ = session != nullptr ? std::make_unique<PreviewLayer>(*session) : nullptr;
    emit previewChanged();
}

QStringList Sampler::symbols()
{
    QStringList names;
    for (const QString &file : QDir(":/Skyflare/Ui/symbols").entryList())
        names.append(file.chopped(4)); // ".svg"
    return names;
}

} // namespace skyflare
