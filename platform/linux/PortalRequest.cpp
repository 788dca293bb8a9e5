#include "platform/linux/PortalRequest.h"

#include "platform/base/Handle.h"
#include "platform/linux/Portal.h"

#include <gio/gio.h>

#include <algorithm>
#include <utility>

namespace skyflare {

namespace {

/// Nobody can guess it, and a path on the bus may contain it.
std::string makeToken()
{
    const Handle<gchar, &g_free> uuid(g_uuid_string_random());
    std::string token = std::string("skyflare_") + uuid.get();
    std::ranges::replace(token, '-', '_');
    return token;
}

} // namespace

PortalRequest::PortalRequest(MessageBus &sessionBus, Answered answered)
    : bus_(sessionBus), token_(makeToken()), answered_(std::move(answered))
{
}

std::shared_ptr<PortalRequest> PortalRequest::ask(MessageBus &sessionBus, const Question &question,
                                                  Answered answered)
{
    std::shared_ptr<PortalRequest> request(new PortalRequest(sessionBus, std::move(answered))); // NOLINT
    request->send(question);
    return request;
}

// The answer may come before the call has returned: it is listened for before the call. By the token alone:
// the rest of the path is our name on the bus, which only the thread knows.
void PortalRequest::send(const Question &question)
{
    const auto weak = weak_from_this();
    response_ = bus_.subscribe(
        {portal::service, {}, "org.freedesktop.portal.Request", "Response", "(ua{sv})", {}},
        [weak](const BusSignal &signal) {
            const auto self = weak.lock();
            if (!self || !signal.path.ends_with("/" + self->token_))
                return;
            std::uint32_t code = 0;
            GVariant *results = nullptr;
            g_variant_get(signal.values.get(), "(u@a{sv})", &code, &results);
            self->finish(Answer{static_cast<Response>(std::min(code, 2U)), takeVariant(results)});
        });
    restart_ = bus_.watch(portal::service, [weak](bool isThere) {
        if (const auto self = weak.lock(); self && !isThere)
            self->finish(Error{"portal", 0, "the desktop portal has gone"});
    });
    GVariantBuilder options;
    g_variant_builder_init(&options, G_VARIANT_TYPE_VARDICT);
    g_variant_builder_add(&options, "{sv}", "handle_token", g_variant_new_string(token_.c_str()));
    const Variant arguments = takeVariant(question.arguments(g_variant_builder_end(&options)));
    bus_.call({portal::service, portal::path, question.interface, question.method, arguments, "(o)"},
              [weak](const Result<BusAnswer> &answer) {
                  if (const auto self = weak.lock(); self && !answer)
                      self->finish(answer.error());
              });
}

void PortalRequest::finish(const Result<Answer> &answer)
{
    response_.reset();
    restart_.reset();
    if (const auto answered = std::exchange(answered_, {}))
        answered(answer);
}

} // namespace skyflare
