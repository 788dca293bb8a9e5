#pragma once

#include <memory>

namespace skyflare {

template <auto release> struct Release {
    template <typename T> void operator()(T *resource) const
    {
        release(resource); // NOLINT(cppcoreguidelines-owning-memory): the handle is the owner
    }
};

/// A C library's object, released by its own function when the handle ends.
///
/// An inline C function has no address of its own in every file: give that one a named deleter.
template <typename T, auto release> using Handle = std::unique_ptr<T, Release<release>>;

} // namespace skyflare
