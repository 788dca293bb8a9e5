#include "platform/linux/BackgroundThread.h"

#include <sched.h>

namespace skyflare {

void becomeBackgroundThread()
{
    const sched_param priority{};
    sched_setscheduler(0, SCHED_BATCH, &priority); // 0: this thread, not the process
}

} // namespace skyflare
