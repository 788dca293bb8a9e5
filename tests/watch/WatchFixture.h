#pragma once

#include "tests/fakes/ChildProcess.h"
#include "tests/fakes/Films.h"

#include <nlohmann/json.hpp>

#include <filesystem>
#include <string>
#include <vector>

namespace skyflare {

/// Where and what the tests of the whole program run.
struct WatchFixture : Films {
    /// The program with its files in a folder of the test's own.
    [[nodiscard]] std::vector<std::string> command(std::vector<std::string> arguments) const
    {
        arguments.insert(arguments.begin(), {SKYFLARE_WATCH, "--data-dir", (folder / "data").string()});
        return arguments;
    }

    /// Encodes a film with H.264, B-frames included: 30 frames a second, dark, with bright frames where
    /// `bright`, an expression of ffmpeg's over the frame number N, is 1. @return its path
    [[nodiscard]] std::string film(const std::string &name, int frames, const std::string &bright) const
    {
        return make(name, "-f lavfi -i \"nullsrc=s=320x180:r=30,geq=lum='40+mod(X*7+Y*3+N,16)+120*(" +
                              bright + ")':cb=128:cr=128\" -frames:v " + std::to_string(frames) +
                              " -c:v libx264 -bf 2 -g 30 -crf 12 -pix_fmt yuv420p -movflags +faststart");
    }

    [[nodiscard]] std::filesystem::path database() const { return folder / "data/data/Storage.sqlite"; }
};

/// The objects of one type among the lines of --json.
inline std::vector<nlohmann::json> objectsOfType(const std::vector<std::string> &lines,
                                                 const std::string &type)
{
    std::vector<nlohmann::json> objects;
    for (const std::string &line : lines) {
        auto object = nlohmann::json::parse(line); // a line that is no JSON fails the test
        if (object.at("type") == type)
            objects.push_back(std::move(object));
    }
    return objects;
}

} // namespace skyflare
