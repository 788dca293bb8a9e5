#pragma once

#include "bench/Process.h"
#include "platform/camera/CameraSource.h"

#include <QObject>
#include <QPointer>
#include <QSize>
#include <atomic>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

class QQuickItem;
class QQuickWindow;

namespace skyflare {
class PreviewView;
}

namespace skyflare::bench {

/// How the app finds its settings: as somebody left it who knows it already.
struct AppSettings {
    float sensivity = 0.4F; ///< the least rise that takes a photo
    double frequency = 1.0; ///< seconds from one photo to the next
};

/// The real app in this process, in a folder of its own, and what is seen of it from outside: its window's
/// frames. Its user is whoever asks it to press keys.
///
/// Threads: main; the renderer's own reports frames. One a process.
class AppRun final : public QObject {
    Q_OBJECT

public:
    struct Options {
        std::shared_ptr<CameraSource> camera = {}; ///< empty: the simulated one, at its usual size
        QSize windowSize = {};                     ///< logical pixels; empty: the app's own
        AppSettings settings = {};
        /// On main, once each: the first frame is on the screen and the window takes keys; the first frame
        /// with a live picture is.
        std::function<void(AppRun &)> ready = {};
        std::function<void(AppRun &)> previewed = {};
    };

    /// @param folder  where the app keeps everything; a start finds what the one before has left
    AppRun(std::filesystem::path folder, Options options);

    /// Shows the app until somebody quits it. @return the app's exit status, and 1 if nothing was ever
    /// painted
    int run();

    /// The key that starts and stops.
    void pressSpace() { press(Qt::Key_Space); }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    /// In the middle of the item of that object name.
    void click(const QString &name);

    /// What may be looked at while a frame begins: all that is in the window.
    using Sight = std::function<bool(QQuickItem &content)>;
    /// Waits for the first frame that shows it. @param then  on main, with now() of when it was on the screen
    void awaitSight(Sight sight, std::function<void(double seenAt)> then);
    [[nodiscard]] QQuickWindow &window() const;
    /// On main, that long from now.
    void doAfter(double seconds, std::function<void()> work);

    /// now() of when the frame was on the screen; 0 before.
    [[nodiscard]] double paintedAt() const { return paintedAt_; }
    [[nodiscard]] double previewedAt() const { return previewedAt_; }
    /// How many pictures of the camera have been on the screen so far.
    [[nodiscard]] int previews() const { return previews_; }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    struct Awaited {
        Sight sight;
        std::function<void(double seenAt)> then;
        bool isInFrame = false; ///< of the frame under way
    };

    const std::filesystem::path folder_;
    const Options options_;
    QPointer<QQuickWindow> window_;
    bool isReady_ = false;
    QPointer<PreviewView> preview_;
    std::atomic<qint64> shown_ = 0; ///< the picture of the frame under way; 0: none
    std::atomic<int> previews_ = 0;
    std::atomic<double> paintedAt_ = 0;
    std::atomic<double> previewedAt_ = 0;
    std::mutex awaitedMutex_;
    std::vector<Awaited> awaited_;

    void prepareSettings() const;
    void watch(QQuickWindow &window);
    void frameBegan();
    void frameShown();
    void reportSights(double seenAt);
    void becomeReady();
};

/// Runs `self` again with these arguments, each time in a process of its own, and gives what it measured. Its
/// last two arguments are a new folder, and the file for the numbers.
Numbers measureInProcess(const std::string &self, std::vector<std::string> arguments,
                         const std::filesystem::path &folder);

} // namespace skyflare::bench
