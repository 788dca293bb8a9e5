#include "ui/Storyboard.h"

#include <QFile>
#include <QQmlFile>
#include <algorithm>

namespace skyflare {

Storyboard::Storyboard(std::string name, std::vector<Scene> scenes)
    : name_(std::move(name)), scenes_(std::move(scenes))
{
}

std::shared_ptr<ViewController> Storyboard::makeController(std::string_view identifier) const
{
    const auto scene = std::ranges::find(scenes_, identifier, &Scene::identifier);
    if (scene == scenes_.end())
        fail(identifier, "is not there");
    if (!QFile::exists(QQmlFile::urlToLocalFileOrQrc(scene->view)))
        fail(identifier, "has no view at " + scene->view.toString().toStdString());
    auto controller = scene->makeController();
    if (controller)
        controller->setViewUrl(scene->view);
    return controller;
}

void Storyboard::fail(std::string_view identifier, std::string_view fault) const
{
    const std::string line =
        "Storyboard \"" + name_ + "\": \"" + std::string(identifier) + "\" " + std::string(fault);
    qFatal("%s", line.c_str());
}

} // namespace skyflare
