#pragma once

#include "ui/ViewController.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace skyflare {

/// The screens that go by one name: for each identifier the QML file of its view and who makes its
/// controller.
///
/// An identifier that is not there, a controller of another class, or a view that is missing is a programming
/// error and ends the program with a line that names it. Threads: main.
class Storyboard {
public:
    struct Scene {
        std::string identifier;
        QUrl view; ///< qrc:/…
        std::function<std::shared_ptr<ViewController>()> makeController;
    };

    Storyboard(std::string name, std::vector<Scene> scenes);

    // instantiateViewControllerWithIdentifier:
    /// A new controller with its view's file; viewDidLoad() has not run.
    template <typename Controller = ViewController>
    [[nodiscard]] std::shared_ptr<Controller> instantiateViewController(std::string_view identifier) const
    {
        auto controller = std::dynamic_pointer_cast<Controller>(makeController(identifier));
        if (!controller)
            fail(identifier, "has a controller of another class");
        return controller;
    }
    [[nodiscard]] const std::string &name() const { return name_; }

private:
    [[nodiscard]] std::shared_ptr<ViewController> makeController(std::string_view identifier) const;
    [[noreturn]] void fail(std::string_view identifier, std::string_view fault) const;

    const std::string name_;
    const std::vector<Scene> scenes_;
};

} // namespace skyflare
