#pragma once

#include "platform/base/Console.h"
#include "platform/base/DispatchQueue.h"
#include "platform/base/Result.h"
#include "platform/linux/OpenFile.h"
#include "platform/linux/PlatformThread.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <vector>

struct _GVariant; // NOLINT(bugprone-reserved-identifier): GLib's

namespace skyflare {

class BusConnection;

/// A value as D-Bus has it. It never changes; any thread.
using Variant = std::shared_ptr<_GVariant>;

/// Takes over what g_variant_new() and its kin give, floating or not.
Variant takeVariant(_GVariant *value);

struct BusCall {
    std::string service;
    std::string path;
    std::string interface;
    std::string method;
    Variant arguments;             ///< a tuple; empty: none
    const char *answerType = "()"; ///< another answer is an error
    /// Then it has failed, and an answer that comes later is dropped.
    std::chrono::milliseconds longestWait{25'000};

    static constexpr std::chrono::milliseconds forEver{std::numeric_limits<int>::max()}; ///< as GIO has it
};

struct BusAnswer {
    Variant values;                                     ///< a tuple
    std::vector<std::shared_ptr<const OpenFile>> files; ///< what an "h" in the values counts through
};

/// Whether `firstArgument` is the signal's first one, or what a name begins with that has more behind a
/// point.
enum class FirstArgument { Whole, Namespace };

/// Which signals are wanted. Empty: any.
struct BusSignalMatch {
    std::string service;
    std::string path;
    std::string interface;
    std::string signal;
    const char *type = "()"; ///< of its values; another one is ignored
    std::string firstArgument;
    FirstArgument firstArgumentIs = FirstArgument::Whole;
};

struct BusSignal {
    std::string path;
    Variant values; ///< a tuple
};

/// A signal of our own, for whoever listens.
struct BusAnnouncement {
    std::string path;
    std::string interface;
    std::string signal;
    Variant values; ///< a tuple
};

/// A call of somebody else's to an object of ours.
struct BusRequest {
    std::string interface;
    std::string method;
    Variant arguments; ///< a tuple, as the interface says
};

/// What others may call at one path. Anything else does not exist there.
struct BusObject {
    std::string path;
    const char *interfaces; ///< their description in the bus's XML
    /// Does it, and gives the answer: a tuple as the interface says. An error's domain is its name on the
    /// bus.
    std::function<Result<Variant>(const BusRequest &)> serve;
};

/// What is said to a service before anything else is called of it.
struct BusGreeting {
    BusCall call;
    std::string refused; ///< told to the console, once, with the reason, where the service says no
};

/// Whether the service or what was asked of it does not exist here: nothing is out of order.
bool isMissing(const Error &error);

/// One of the machine's message buses (D-Bus).
///
/// It connects when it is first asked for something. A bus that is not there is said once on the console;
/// then, and after it has gone, every call fails, and the next one looks for it anew. Threads: any; nothing
/// waits. Answers and signals come on `queue`, and none once that is closed. Borrows its Services, which must
/// outlive it.
class MessageBus {
public:
    enum class Kind { Session, System };
    struct Services {
        PlatformThread &thread;
        SerialQueue &queue; ///< where answers and signals come
        Console &console;
        std::optional<BusGreeting> greeting = std::nullopt;
    };
    using Answer = std::function<void(const Result<BusAnswer> &)>;
    using Handler = std::function<void(const BusSignal &)>;
    /// Who lets go of it on `queue` hears no more from then on.
    using Subscription = std::shared_ptr<void>;

    /// The bus that the environment names.
    MessageBus(Kind kind, const Services &services);
    ~MessageBus();
    MessageBus(const MessageBus &) = delete;
    MessageBus &operator=(const MessageBus &) = delete;

    /// Starts the service if the bus knows how to.
    /// @param answer  comes once; the error's domain is the error's name on the bus
    void call(BusCall call, Answer answer);
    /// Without a connection it is lost: nobody has heard of us yet.
    void announce(BusAnnouncement announcement);
    [[nodiscard]] Subscription subscribe(BusSignalMatch match, Handler handler);
    /// Calls `changed` whenever the service comes (again) or goes, not for the present state.
    [[nodiscard]] Subscription watch(const std::string &service, std::function<void(bool isThere)> changed);
    /// Lets others call the object, which is there before anything that is called later is done.
    [[nodiscard]] Subscription offer(BusObject object);
    /// Calls `lost` whenever the bus goes, or is found missing.
    [[nodiscard]] Subscription watchLoss(std::function<void()> lost);

private:
    template <typename Function> struct Subscribed;

    const Services services_;
    std::shared_ptr<BusConnection> connection_; ///< works on the thread

    template <typename Function>
    std::shared_ptr<Subscribed<Function>> subscribed(std::uint64_t id, Function does);
};

} // namespace skyflare
