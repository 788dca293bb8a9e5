#pragma once

#include <QObject>
#include <QQmlEngine>
#include <deque>

namespace skyflare {

/// The light power of the last five seconds, and the rise that would trigger a photo.
///
/// Threads: main. Owned by its controller.
class LightCurve : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("owned by its controller")

public:
    static constexpr double spanSeconds = 5;

    struct Sample {
        double uptimeSeconds;
        double brightness; ///< 0 to 1
    };
    /// What lies at the lower and the upper edge of a drawing.
    struct Range {
        double bottom;
        double top;
    };

    /// Samples come in the order of their times; one from before the newest begins a new curve.
    void append(Sample sample);
    void clear();
    [[nodiscard]] const std::deque<Sample> &samples() const { return samples_; }

    [[nodiscard]] double rise() const { return rise_; }
    void setRise(double rise);

    /// The smallest of a few ranges that holds all samples and the rise on top of the newest one.
    [[nodiscard]] Range range() const;

signals:
    void changed();

private:
    std::deque<Sample> samples_;
    double rise_ = 0;
};

} // namespace skyflare
