#include "tests/app/ScreenReader.h"

#include "platform/base/Handle.h"

#include <atspi/atspi.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <functional>
#include <stdexcept>
#include <utility>

namespace skyflare {

namespace {

using Object = Handle<void, &g_object_unref>;

std::string take(gchar *text)
{
    const Handle<gchar, &g_free> held(text);
    return held ? held.get() : "";
}

void serveUntil(const std::function<bool()> &isDone)
{
    // So that the loop goes round, too, when nothing comes.
    const guint timer = g_timeout_add(
        50, [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr);
    while (!isDone())
        g_main_context_iteration(nullptr, TRUE);
    g_source_remove(timer);
}

bool is(AtspiAccessible *item, AtspiStateType state)
{
    const Object states(atspi_accessible_get_state_set(item));
    return states && atspi_state_set_contains(ATSPI_STATE_SET(states.get()), state) != FALSE;
}

AccessibleItem itemOf(std::shared_ptr<AtspiAccessible> handle, const std::string &parentRole)
{
    AtspiAccessible *const item = handle.get();
    return {.handle = std::move(handle),
            .path = ATSPI_OBJECT(item)->path,
            .role = take(atspi_accessible_get_role_name(item, nullptr)),
            .name = take(atspi_accessible_get_name(item, nullptr)),
            .parentRole = parentRole,
            .isEnabled = is(item, ATSPI_STATE_ENABLED),
            .isFocusable = is(item, ATSPI_STATE_FOCUSABLE),
            .isFocused = is(item, ATSPI_STATE_FOCUSED)};
}

/// Those in `parent` that are shown, each before what is in it.
void collect(AtspiAccessible *parent, const std::string &parentRole, std::vector<AccessibleItem> &items)
{
    const int count = atspi_accessible_get_child_count(parent, nullptr);
    for (int i = 0; i < count; ++i) {
        const std::shared_ptr<AtspiAccessible> child(atspi_accessible_get_child_at_index(parent, i, nullptr),
                                                     Release<&g_object_unref>());
        if (!child) // it has just gone
            continue;
        AccessibleItem item = itemOf(child, parentRole);
        const std::string role = item.role;
        if (is(child.get(), ATSPI_STATE_SHOWING))
            items.push_back(std::move(item));
        collect(child.get(), role, items);
    }
}

} // namespace

bool AccessibleItem::isControl() const
{
    static constexpr std::array roles{"push button", "check box", "radio button", "toggle button",
                                      "link",        "combo box", "menu item",    "push button menu",
                                      "slider",      "entry"};
    return std::ranges::find(roles, role) != roles.end();
}

bool AccessibleItem::press() const
{
    const Object held(atspi_accessible_get_action_iface(handle.get()));
    auto *const actions = static_cast<AtspiAction *>(held.get());
    return actions != nullptr && atspi_action_do_action(actions, 0, nullptr) != FALSE;
}

ScreenReader::ScreenReader()
    : launcher_({"/usr/bin/env", "XDG_RUNTIME_DIR=" + folder_.path().string(),
                 "/usr/libexec/at-spi-bus-launcher", "--launch-immediately"})
{
    constexpr int atMostMs = 60'000;
    atspi_set_timeout(atMostMs, atMostMs);
    if (runProgram({"gdbus", "wait", "--session", "org.a11y.Bus"}) != 0 || atspi_init() != 0)
        throw std::runtime_error("there is no accessibility bus: " + launcher_.errors());
    const auto heard = +[](AtspiEvent *event, void *paths) {
        static_cast<std::vector<std::string> *>(paths)->emplace_back(ATSPI_OBJECT(event->source)->path);
        g_boxed_free(ATSPI_TYPE_EVENT, event);
    };
    listener_ = atspi_event_listener_new(heard, &namesChanged_, nullptr);
    atspi_event_listener_register(listener_, "object:property-change:accessible-name", nullptr);
}

ScreenReader::~ScreenReader()
{
    g_object_unref(listener_);
    atspi_exit();
    launcher_.signal(SIGTERM); // and so the bus that it has started
    launcher_.wait();
}

std::vector<std::string> ScreenReader::environment() const
{
    return {"DBUS_SESSION_BUS_ADDRESS=" + session_.address(), "QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1"};
}

std::vector<AccessibleItem> ScreenReader::items()
{
    const Object desktop(atspi_get_desktop(0));
    std::vector<AccessibleItem> found;
    serveUntil([&] {
        found.clear();
        collect(ATSPI_ACCESSIBLE(desktop.get()), "", found);
        return !found.empty();
    });
    return found;
}

void ScreenReader::waitForName(const std::string &role, const std::string &name)
{
    const auto shown = items();
    const auto item = std::ranges::find(shown, role, &AccessibleItem::role);
    if (item == shown.end())
        throw std::runtime_error("there is no " + role);
    namesChanged_.clear();
    serveUntil([&] {
        const auto paths = std::exchange(namesChanged_, {});
        return std::ranges::find(paths, item->path) != paths.end() &&
               take(atspi_accessible_get_name(item->handle.get(), nullptr)) == name;
    });
}

} // namespace skyflare
