#pragma once

#include "platform/base/Result.h"

#include <functional>
#include <string>
#include <vector>

namespace skyflare {

/// Where the desktop puts up notifications for the user to see, and to choose.
///
/// Threads: main.
class NotificationBoard {
public:
    struct Action {
        std::string key; ///< "default": the notification itself is chosen; it has no button
        std::string title;
    };
    enum class Sound {
        Usual, ///< as the desktop likes it
        NewMessage,
        None
    };
    enum class Place {
        Usual,      ///< a banner, then kept in the desktop's list
        BannerOnly, ///< not kept
        ListOnly    ///< it comes without a banner
    };
    enum class Choice {
        Needed, ///< one that the user cannot choose is of no use
        Welcome
    };
    struct Content {
        std::string summary; ///< empty: the app's name
        std::string body;    ///< plain text
        std::vector<Action> actions;
        Choice choice = Choice::Needed;
        std::string identifier{}; ///< it takes the place of one of the same; empty: of none
        Sound sound = Sound::Usual;
        Place place = Place::Usual;
    };
    using Shown = std::function<void(const Result<> &)>;
    struct Answer {
        std::string key;             ///< the action's
        std::string activationToken; ///< brings a window to the front on Wayland; may be empty
    };
    using Chosen = std::function<void(const Answer &)>;

    NotificationBoard() = default;
    NotificationBoard(const NotificationBoard &) = delete;
    NotificationBoard &operator=(const NotificationBoard &) = delete;
    virtual ~NotificationBoard() = default;

    /// Whether there is one: an error where nobody would show anything.
    virtual void askWhetherThere(Shown answered) = 0;
    /// @param shown  called once; an error where it is not
    /// @param chosen  called once at most; may be empty. Let go of when it can no longer be called
    virtual void show(Content content, Shown shown, Chosen chosen) = 0;
    /// Takes down what is shown under that identifier.
    virtual void remove(const std::string &identifier) = 0;
};

} // namespace skyflare
