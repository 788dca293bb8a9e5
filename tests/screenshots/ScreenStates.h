#pragma once

#include "ui/ViewController.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace skyflare {

/// One screen in one state that matters.
struct ScreenState {
    std::string name;
    /// The root of the window. Popups and whatever else belongs to the state are on it.
    std::function<std::shared_ptr<ViewController>()> makeRoot;
    std::string language = "en"; ///< of its texts, which are looked up while it is made
    std::vector<int> keys = {};  ///< Qt::Key, pressed when it is there
};

/// All of them. A new screen adds its states here.
std::vector<ScreenState> screenStates();

/// One frame from the camera, to the screen that shows it.
void showLivePicture();

} // namespace skyflare
