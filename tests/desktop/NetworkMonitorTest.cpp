// The kernel's routes as they change: in a network of the test's own, which begins without any.

#include "platform/linux/OpenFile.h"
#include "platform/linux/SystemNetworkMonitor.h"
#include "tests/fakes/PumpedQueue.h"

#include <doctest/doctest.h>
#include <fcntl.h>
#include <net/if.h>
#include <net/route.h>
#include <netinet/in.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <cstring>

using namespace skyflare;

namespace {

/// Of this thread's network; a default route over its loopback.
void changeDefaultRoute(unsigned long request)
{
    const OpenFile control{socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)};
    ifreq loopback{};
    std::strcpy(loopback.ifr_name, "lo");
    loopback.ifr_flags = IFF_UP;
    REQUIRE(ioctl(control.descriptor, SIOCSIFFLAGS, &loopback) == 0);
    rtentry route{};
    route.rt_dst.sa_family = route.rt_genmask.sa_family = AF_INET;
    route.rt_flags = RTF_UP;
    route.rt_dev = loopback.ifr_name;
    REQUIRE(ioctl(control.descriptor, request, &route) == 0);
}

/// This thread, and those that it starts, are in a network without any other machine.
class OwnNetwork {
public:
    [[nodiscard]] bool isThere() const { return isThere_; }
    ~OwnNetwork() { CHECK(setns(before_.descriptor, CLONE_NEWNET) == (isThere_ ? 0 : -1)); }

private:
    const OpenFile before_{open("/proc/thread-self/ns/net", O_RDONLY | O_CLOEXEC)};
    const bool isThere_ = unshare(CLONE_NEWNET) == 0;
};

} // namespace

TEST_CASE("the network is there while there is a default route, and whoever observes last hears of it")
{
    const OwnNetwork network;
    if (!network.isThere()) {
        MESSAGE("NOT TESTED: this user may not make a network");
        return;
    }
    PumpedQueue queue;
    std::string heard;
    const auto hear = [&](char who) { queue.async([&heard, who] { heard += who; }); };
    SystemNetworkMonitor monitor;
    monitor.observe([&] { hear('a'); }); // if it has not looked by now
    REQUIRE(queue.runUntil([&] { return !monitor.isConnected(); }));
    monitor.observe([&] {
        hear('b');
        monitor.observe([&] { hear('c'); });
    });
    changeDefaultRoute(SIOCADDRT);
    REQUIRE(queue.runUntil([&] { return heard.ends_with("b"); }));
    CHECK(monitor.isConnected());
    changeDefaultRoute(SIOCDELRT);
    REQUIRE(queue.runUntil([&] { return heard.ends_with("bc"); }));
    CHECK_FALSE(monitor.isConnected());
}
