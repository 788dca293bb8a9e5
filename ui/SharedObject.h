#pragma once

#include <QCoreApplication>
#include <QObject>
#include <memory>

namespace skyflare {

/// A shared QObject that outlives the work which lets go of it: what closes itself by its own button, and
/// what a screen still shows while it goes.
/// Threads: main.
template <typename T, typename... Arguments> std::shared_ptr<T> makeShared(Arguments &&...arguments)
{
    const auto letGo = [](T *object) {
        if (QCoreApplication::instance() != nullptr)
            object->deleteLater();
        else
            delete object; // NOLINT(cppcoreguidelines-owning-memory)
    };
    return {new T(std::forward<Arguments>(arguments)...), letGo};
}

} // namespace skyflare
