#pragma once

#include "platform/image/Image.h"
#include "ui/PictureDelivery.h"

#include <QImage>
#include <QObject>
#include <memory>

namespace skyflare {

/// Decodes one photo at a time, off main, for whoever is connected; the newest wish counts, and what is no
/// longer wished for is not begun.
///
/// Threads: main; decodes on two threads that all loaders share.
class PhotoLoader : public QObject {
    Q_OBJECT

public:
    PhotoLoader() = default;
    ~PhotoLoader() override { cancel(); }

    enum class Wish { Sharp, AtOnce };

    /// The photo so that it fits into a box, in pixels, never enlarged; or what there is of it at once: a
    /// smaller picture, or none where there is none or the sharp one is as quick.
    void load(const Image &photo, QSize box, Wish wish = Wish::Sharp);
    void cancel();

signals:
    /// Comes on main. A null picture: there is none at once, or the photo cannot be decoded.
    void loaded(const QImage &picture);

private:
    std::shared_ptr<PictureDelivery> delivery_; ///< of the photo that is on its way
};

} // namespace skyflare
