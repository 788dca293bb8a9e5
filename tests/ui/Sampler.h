#pragma once

#include "ui/ButtonOutlet.h"
#include "ui/ImageOutlet.h"
#include "ui/PreviewLayer.h"
#include "ui/Storyboard.h"
#include "ui/ViewController.h"

namespace skyflare {

/// A screen with the small views of ui/ on it; for tests and pictures.
class Sampler : public skyflare::ViewController {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by its storyboard")
    Q_PROPERTY(skyflare::ButtonOutlet *mainButton READ mainButton CONSTANT)
    Q_PROPERTY(skyflare::ButtonOutlet *gearButton READ gearButton CONSTANT)
    Q_PROPERTY(skyflare::LabelOutlet *statusText READ statusText CONSTANT)
    Q_PROPERTY(skyflare::ImageOutlet *photo READ photo CONSTANT)
    Q_PROPERTY(skyflare::PreviewLayer *previewLayer READ previewLayer NOTIFY previewChanged)

public:
    static Storyboard storyboard();

    int viewDidLoads = 0;
    int mainButtonTaps = 0;

    void viewDidLoad() override;
    Q_INVOKABLE void mainButtonTapped() { ++mainButtonTaps; }
    void showPreview(CaptureSession *session);

    [[nodiscard]] ButtonOutlet *mainButton() { return &mainButton_; }
    [[nodiscard]] ButtonOutlet *gearButton() { return &gearButton_; }
    [[nodiscard]] LabelOutlet *statusText() { return &statusText_; }
    [[nodiscard]] ImageOutlet *photo() { return &photo_; }
    [[nodiscard]] PreviewLayer *previewLayer() { return previewLayer_.get(); }

signals:
    void previewChanged();

private:
    ButtonOutlet mainButton_;
    ButtonOutlet gearButton_;
    LabelOutlet statusText_;
    ImageOutlet photo_;
    std::unique_ptr<PreviewLayer> previewLayer_;
};

/// A screen with nothing on it.
class PlainScreen : public skyflare::ViewController {
    Q_OBJECT
};

} // namespace skyflare
