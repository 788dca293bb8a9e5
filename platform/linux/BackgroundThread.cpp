#include "platform/linux/BackgroundThread.h"

#include <sched.h>
#include <sys/resource.h>

namespace skyflare {

void becomeBackgroundThread()
{
    const sched_param priority{};
    sched_setscheduler(0, SCHED_BATCH, &priority); // 0: this thread, not the process
}

void becomeWorkingThread()
{
    constexpr int niceness = 5;
    setpriority(PRIO_PROCESS, 0, niceness); // 0: this thread, on Linux
}

} // namespace skyflare
