#include "platform/linux/BusName.h"

#include <gio/gio.h>

#include <cstdint>
#include <utility>

namespace skyflare {

namespace {

constexpr const char *service = "org.freedesktop.DBus";
constexpr const char *path = "/org/freedesktop/DBus";

enum class Outcome : std::uint32_t { Ours = 1, InQueue = 2, Taken = 3, OursAlready = 4 };

std::uint32_t flagsOf(BusName::Claim how)
{
    constexpr std::uint32_t allowReplacement = 1;
    constexpr std::uint32_t replaceExisting = 2;
    constexpr std::uint32_t doNotQueue = 4;
    return how == BusName::Claim::Firm ? replaceExisting : allowReplacement | doNotQueue;
}

Error taken(const std::string &name)
{
    return {"bus", 0, "another program has the name " + name};
}

} // namespace

std::shared_ptr<BusName> BusName::claim(MessageBus &bus, std::string name, Claim how, Changed changed)
{
    std::shared_ptr<BusName> claimed(new BusName(bus, std::move(name), std::move(changed))); // NOLINT
    claimed->listen();
    claimed->request(how);
    return claimed;
}

BusName::~BusName()
{
    if (!isReleased_)
        release([] {});
}

void BusName::release(std::function<void()> released)
{
    isReleased_ = true;
    subscriptions_.clear();
    bus_.call(
        {service, path, service, "ReleaseName", takeVariant(g_variant_new("(s)", name_.c_str())), "(u)"},
        [released = std::move(released)](const Result<BusAnswer> &) { released(); });
}

void BusName::listen()
{
    const auto become = [weak = weak_from_this()](State state, const Result<> &owned) {
        if (const auto self = weak.lock())
            self->become(state, owned);
    };
    subscriptions_ = {
        bus_.subscribe({service, path, service, "NameAcquired", "(s)", name_},
                       [become](const BusSignal &) { become(State::Ours, {}); }),
        bus_.subscribe({service, path, service, "NameLost", "(s)", name_},
                       [become, name = name_](const BusSignal &) { become(State::NotOurs, taken(name)); }),
        bus_.watchLoss([become] {
            become(State::NotOurs, Error{"bus", 0, "there is no session bus"});
        })};
}

void BusName::request(Claim how)
{
    bus_.call({service, path, service, "RequestName",
               takeVariant(g_variant_new("(su)", name_.c_str(), flagsOf(how))), "(u)"},
              [weak = weak_from_this()](const Result<BusAnswer> &answer) {
                  const auto self = weak.lock();
                  if (!self)
                      return;
                  if (!answer) {
                      self->become(State::NotOurs, answer.error());
                      return;
                  }
                  std::uint32_t outcome = 0;
                  g_variant_get(answer->values.get(), "(u)", &outcome);
                  if (outcome == static_cast<std::uint32_t>(Outcome::Ours) ||
                      outcome == static_cast<std::uint32_t>(Outcome::OursAlready))
                      self->become(State::Ours, {});
                  else
                      self->become(State::NotOurs, taken(self->name_));
              });
}

void BusName::become(State state, const Result<> &owned)
{
    if (std::exchange(state_, state) != state)
        changed_(owned);
}

} // namespace skyflare
