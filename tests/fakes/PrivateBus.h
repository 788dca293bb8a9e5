#pragma once

#include "tests/fakes/ChildProcess.h"
#include "tests/fakes/PumpedQueue.h"
#include "tests/fakes/TemporaryFolder.h"

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

struct _GDBusConnection; // NOLINT(bugprone-reserved-identifier): GLib's
struct _GDBusMessage;    // NOLINT(bugprone-reserved-identifier): GLib's
struct _GVariant;        // NOLINT(bugprone-reserved-identifier): GLib's

namespace skyflare {

/// A message bus for one test, on which nothing is but what the test puts there. It is this process's session
/// bus and its system bus from then on.
class PrivateBus {
public:
    PrivateBus();

    [[nodiscard]] const std::string &address() const { return address_; }
    /// The bus is gone, and its address leads nowhere.
    void kill() { daemon_->kill(); }
    /// From when it reads its configuration again it starts the command, in words without blanks, for that
    /// name.
    void addService(const std::string &name, const std::string &command) const;

private:
    const TemporaryFolder folder_;
    std::unique_ptr<ChildProcess> daemon_;
    std::string address_;
};

/// A service on a bus that does with each call what the test says, on whatever object. It goes when it ends.
///
/// Threads: the test's; calls come while it pumps its queue. Borrows the queue.
class FakeBusService {
public:
    struct Reply {
        _GVariant *values = nullptr; ///< a tuple; null: `error`, or no answer at all
        std::string error{};         ///< its name
        int file = -1;               ///< goes along, and is taken over
    };
    /// @param arguments  a tuple, or null
    using Method = std::function<Reply(_GVariant *arguments)>;

    FakeBusService(const PrivateBus &bus, const std::string &name, PumpedQueue &queue);
    ~FakeBusService();
    FakeBusService(const FakeBusService &) = delete;
    FakeBusService &operator=(const FakeBusService &) = delete;

    /// What is not set does not exist.
    void on(const std::string &method, Method does) { methods_[method] = std::move(does); }
    /// @param answer  a tuple as GVariant's text has it
    void on(const std::string &method, const char *answer);
    /// Answers the last call that was met with silence.
    void answerLate(const Reply &answer) const { reply(silenced_.get(), answer); }
    void emit(const std::string &path, const std::string &interface, const std::string &signal,
              _GVariant *values) const;
    /// Calls another program, which the bus has passed on when this returns; the answer is of no interest.
    void send(const std::string &service, const std::string &path, const std::string &interface,
              const std::string &method, _GVariant *arguments) const;
    /// "Method (arguments)" of each call of a method that exists, in order.
    [[nodiscard]] const std::vector<std::string> &calls() const { return calls_; }
    [[nodiscard]] std::size_t count(const std::string &method) const;

private:
    PumpedQueue &queue_;
    std::map<std::string, Method> methods_;
    std::vector<std::string> calls_;
    std::shared_ptr<_GDBusMessage> silenced_;
    std::shared_ptr<_GDBusConnection> connection_;
    const std::shared_ptr<FakeBusService *> self_ = std::make_shared<FakeBusService *>(this); ///< is called

    void askBus(const char *method, _GVariant *arguments) const;
    void serve(const std::shared_ptr<_GDBusMessage> &call);
    void reply(_GDBusMessage *call, const Reply &reply) const;
};

} // namespace skyflare
