#include "platform/linux/DesktopIdleInhibitor.h"

#include "platform/linux/Portal.h"

#include <gio/gio.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <utility>

namespace skyflare {

namespace {

constexpr std::uint32_t idle = 8; // the portal and the session manager have the same flag for it
constexpr unsigned mostRenewals = 16;
constexpr std::chrono::seconds patience{25}; // with one that does not answer
constexpr const char *appName = "Skyflare";

struct Question {
    const std::string &applicationId;
    const std::string &reason;
    const std::string &token;
};

struct Way {
    const char *service;
    const char *path;
    const char *interface;
    GVariant *(*arguments)(const Question &question);
    const char *answerType;
    const char *undo; ///< null: the answer is a request, which is closed
};

GVariant *portalArguments(const Question &question)
{
    constexpr const char *noWindow = "";
    GVariantBuilder options;
    g_variant_builder_init(&options, G_VARIANT_TYPE_VARDICT);
    g_variant_builder_add(&options, "{sv}", "handle_token", g_variant_new_string(question.token.c_str()));
    g_variant_builder_add(&options, "{sv}", "reason", g_variant_new_string(question.reason.c_str()));
    return g_variant_new("(sua{sv})", noWindow, idle, &options);
}

GVariant *screenSaverArguments(const Question &question)
{
    return g_variant_new("(ss)", appName, question.reason.c_str());
}

GVariant *sessionManagerArguments(const Question &question)
{
    constexpr std::uint32_t noWindow = 0;
    return g_variant_new("(susu)", question.applicationId.c_str(), noWindow, question.reason.c_str(), idle);
}

constexpr std::array<Way, 3> ways{{
    {portal::service, portal::path, "org.freedesktop.portal.Inhibit", &portalArguments, "(o)", nullptr},
    {"org.freedesktop.ScreenSaver", "/org/freedesktop/ScreenSaver", "org.freedesktop.ScreenSaver",
     &screenSaverArguments, "(u)", "UnInhibit"},
    {"org.gnome.SessionManager", "/org/gnome/SessionManager", "org.gnome.SessionManager",
     &sessionManagerArguments, "(u)", "Uninhibit"},
}};
constexpr const char *request = "org.freedesktop.portal.Request";

BusCall undoing(const Way &way, const Variant &answer)
{
    if (way.undo != nullptr)
        return {way.service, way.path, way.interface, way.undo, answer}; // the cookie that it gave
    const char *handle = nullptr;
    g_variant_get(answer.get(), "(&o)", &handle);
    return {way.service, handle, request, "Close", {}};
}

} // namespace

IdleInhibitor::Inhibition DesktopIdleInhibitor::inhibit(const std::string &reason)
{
    if (services_.empty())
        watchServices();
    if (++wanted_ == 1) {
        reason_ = reason;
        renewals_ = 0;
        if (state_ == State::Idle)
            start();
    }
    return {this, [weak = weak_from_this()](const void * /*self*/) {
                if (const auto self = weak.lock())
                    self->unwanted();
            }};
}

void DesktopIdleInhibitor::watchServices()
{
    for (std::size_t way = 0; way < ways.size(); ++way)
        services_.push_back(bus_.watch(ways[way].service, [weak = weak_from_this(), way](bool isThere) {
            if (const auto self = weak.lock())
                self->serviceChanged(way, isThere);
        }));
}

void DesktopIdleInhibitor::start()
{
    hasNewService_ = false;
    refused_.reset();
    ask(0);
}

void DesktopIdleInhibitor::ask(std::size_t index)
{
    way_ = index;
    state_ = State::Asking;
    const Way &way = ways.at(index);
    const std::string token = "skyflare_idle_" + std::to_string(++question_);
    if (way.undo == nullptr)
        listenForRefusal(token);
    const auto weak = weak_from_this();
    bus_.call({way.service, way.path, way.interface, "Inhibit",
               takeVariant(way.arguments({applicationId_, reason_, token})), way.answerType,
               BusCall::forEver},
              [weak, &way, question = question_](const Result<BusAnswer> &answer) {
                  const auto self = weak.lock();
                  if (self && question == self->question_)
                      self->answered(answer);
                  else if (self && answer) // too late: it would stay awake for good
                      self->undo(undoing(way, answer->values));
              });
    mainQueue_.asyncAfter(patience, [weak, &way, question = question_] {
        const auto self = weak.lock();
        if (self && question == self->question_ && self->state_ == State::Asking)
            self->failed({"bus", 0, std::string(way.service) + " does not answer"});
    });
}

/// The portal answers at once, and tells later whether its desktop agrees; before the call, lest it be
/// missed.
void DesktopIdleInhibitor::listenForRefusal(const std::string &token)
{
    refusal_ = bus_.subscribe({ways[way_].service, {}, request, "Response", "(ua{sv})", {}},
                              [weak = weak_from_this(), token](const BusSignal &signal) {
                                  std::uint32_t response = 0;
                                  g_variant_get_child(signal.values.get(), 0, "u", &response);
                                  const auto self = weak.lock();
                                  if (self && response != 0 && signal.path.ends_with("/" + token))
                                      self->failed({"portal", 0, "the desktop refuses"});
                              });
}

void DesktopIdleInhibitor::answered(const Result<BusAnswer> &answer)
{
    if (!answer) {
        failed(answer.error());
        return;
    }
    state_ = State::Held;
    undo_ = undoing(ways[way_], answer->values);
    if (wanted_ == 0)
        release();
}

void DesktopIdleInhibitor::failed(const Error &error)
{
    refusal_.reset();
    ++question_; // what is still said to this one does not count
    if (!isMissing(error))
        refused_ = error;
    if (wanted_ == 0)
        state_ = State::Idle;
    else if (way_ + 1 < ways.size())
        ask(way_ + 1);
    else
        giveUp();
}

void DesktopIdleInhibitor::giveUp()
{
    state_ = State::Idle;
    if (hasNewService_)
        renew();
    else if (refused_ && !std::exchange(isReported_, true))
        console_.reportLine("The screen may go dark during a run: " + refused_->message);
}

void DesktopIdleInhibitor::renew()
{
    if (renewals_ == mostRenewals)
        return; // it falls again and again
    ++renewals_;
    start();
}

void DesktopIdleInhibitor::serviceChanged(std::size_t way, bool isThere)
{
    if (state_ == State::Asking) {
        hasNewService_ = hasNewService_ || isThere;
        return;
    }
    const bool isLost = state_ == State::Held && way == way_; // also when another takes its place
    if (isLost) {
        refusal_.reset();
        state_ = State::Idle;
    }
    if (wanted_ > 0 && (isLost || (state_ == State::Idle && isThere)))
        renew();
}

void DesktopIdleInhibitor::unwanted()
{
    if (--wanted_ == 0 && state_ == State::Held)
        release();
}

void DesktopIdleInhibitor::release()
{
    refusal_.reset();
    state_ = State::Idle;
    undo(std::exchange(undo_, {}));
}

void DesktopIdleInhibitor::undo(BusCall call)
{
    bus_.call(std::move(call), [](const Result<BusAnswer> & /*answer*/) {});
}

} // namespace skyflare
