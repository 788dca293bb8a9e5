#pragma once

#include "tests/fakes/TemporaryFolder.h"

#include <cstdlib>
#include <stdexcept>
#include <string>

namespace skyflare {

/// Films, made by ffmpeg in a folder of their own.
struct Films {
    TemporaryFolder folder;

    std::filesystem::path make(const std::string &name, const std::string &options) const
    {
        auto path = folder / name;
        const std::string command = "ffmpeg -nostdin -v error -y " + options + " '" + path.string() + "'";
        if (std::system(command.c_str()) != 0)
            throw std::runtime_error("ffmpeg failed: " + command);
        return path;
    }
    /// 2 s, 50 pictures, each a grey a little lighter than the one before; with reordered ones for H.264.
    std::filesystem::path rising(const std::string &name,
                                 const std::string &codec = "-c:v libx264 -bf 3") const
    {
        return make(name, "-f lavfi -i \"nullsrc=s=322x182:r=25:d=2,geq=lum='20+4*N':cb=128:cr=128\" "
                          "-pix_fmt yuv420p " +
                              codec);
    }
};

} // namespace skyflare
