#include "platform/linux/PlatformThread.h"

#include "platform/base/Handle.h"

#include <glib.h>

#include <utility>

namespace skyflare {

namespace {

using Source = Handle<GSource, &g_source_unref>;
using Work = std::function<void()>;

gboolean runOnce(gpointer work)
{
    (*static_cast<Work *>(work))();
    return G_SOURCE_REMOVE;
}

void release(gpointer work)
{
    const std::unique_ptr<Work> owned(static_cast<Work *>(work));
}

} // namespace

void PlatformThread::Release::operator()(_GMainContext *context) const
{
    g_main_context_unref(context);
}

PlatformThread::PlatformThread() : context_(g_main_context_new()), thread_([this] { run(); }) {}

PlatformThread::~PlatformThread()
{
    async([this] { isEnding_ = true; });
    thread_.join();
}

// Not g_main_context_invoke(): before the thread has begun that would run the work here.
void PlatformThread::async(std::function<void()> work)
{
    const Source source(g_idle_source_new());
    g_source_set_priority(source.get(), G_PRIORITY_DEFAULT);
    g_source_set_callback(source.get(), &runOnce, std::make_unique<Work>(std::move(work)).release(),
                          &release);
    g_source_attach(source.get(), context_.get());
}

void PlatformThread::run()
{
    g_main_context_push_thread_default(context_.get());
    while (!isEnding_ || holds_.use_count() > 1)
        g_main_context_iteration(context_.get(), TRUE);
    while (g_main_context_iteration(context_.get(), FALSE) == TRUE) { // what GLib still has to tidy up
    }
    g_main_context_pop_thread_default(context_.get());
}

} // namespace skyflare
