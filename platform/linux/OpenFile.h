#pragma once

#include <unistd.h>

namespace skyflare {

/// An open file, closed with the last one that holds it. Any thread.
struct OpenFile {
    explicit OpenFile(int opened) : descriptor(opened) {}
    OpenFile(const OpenFile &) = delete;
    OpenFile &operator=(const OpenFile &) = delete;
    ~OpenFile()
    {
        if (descriptor >= 0)
            ::close(descriptor);
    }

    const int descriptor; ///< negative: it could not be opened
};

} // namespace skyflare
