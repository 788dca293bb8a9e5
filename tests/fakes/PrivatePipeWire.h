#pragma once

#include "tests/fakes/ChildProcess.h"
#include "tests/fakes/TemporaryFolder.h"

#include <csignal>
#include <memory>
#include <string>

namespace skyflare {

/// PipeWire and its session manager, for this test and its children alone: without hardware, D-Bus or root.
///
/// From its making on the environment of the process points at it, so it is made before there are threads.
/// Throws where it does not come up. What it starts ends with it, and with the test.
class PrivatePipeWire {
public:
    PrivatePipeWire();

    /// What a camera shows: one colour, red 32, and white for three pictures in forty.
    struct Pictures {
        std::string format = "RGBx"; ///< or I420; JPEG, from `file`; H264; or Refused, when it comes to it
        int width = 320;
        int height = 180;
        int rate = 30; ///< a second
        std::string file{};
    };

    /// A camera, until it is let go of. Waits until it is there.
    [[nodiscard]] std::unique_ptr<ChildProcess> camera(const std::string &name,
                                                       const Pictures &pictures) const;
    [[nodiscard]] std::unique_ptr<ChildProcess> camera(const std::string &name) const
    {
        return camera(name, {});
    }

    void killDaemon() { daemon_->kill(); }
    /// Once more, after killDaemon().
    void start();
    /// It is there and answers nobody.
    void stopDaemon() { daemon_->signal(SIGSTOP); }

private:
    TemporaryFolder folder_;
    std::unique_ptr<ChildProcess> daemon_;
    std::unique_ptr<ChildProcess> sessionManager_;

    void enterEnvironment() const;
};

} // namespace skyflare
