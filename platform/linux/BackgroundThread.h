#pragma once

namespace skyflare {

/// Makes the calling thread one that works in the background: when it is woken it does not push another
/// thread off its processor, so that handing work to it costs that one next to nothing. It gets no less of
/// the time. Where the system does not allow it, nothing changes.
void becomeBackgroundThread();

/// Makes the calling thread, and those that it starts, one that works hard for a thread that is looked at: it
/// gets a third of the time that this one does where both want all of it, and makes way at once.
void becomeWorkingThread();

} // namespace skyflare
