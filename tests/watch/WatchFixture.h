#pragma once

#include "platform/base/Files.h"
#include "platform/base/PropertyList.h"
#include "tests/fakes/ChildProcess.h"
#include "tests/fakes/Films.h"

#include <doctest/doctest.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <string>
#include <vector>

namespace skyflare {

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

/// Reads what a program prints until there is an object of that type. @return it, with all that came before
inline std::vector<std::string> readUntil(ChildProcess &program, const std::string &type)
{
    std::vector<std::string> lines;
    do {
        const auto line = program.readLine();
        REQUIRE_MESSAGE(line, program.errors());
        lines.push_back(*line);
    } while (objectsOfType({lines.back()}, type).empty());
    return lines;
}

/// Where and what the tests of the whole program run.
struct WatchFixture : Films {
    std::filesystem::path program = SKYFLARE_WATCH;

    /// The program with its files in a folder of the test's own.
    [[nodiscard]] std::vector<std::string> command(std::vector<std::string> arguments) const
    {
        arguments.insert(arguments.begin(), {program, "--data-dir", (folder / "data").string()});
        return arguments;
    }

    /// From here on it is a copy with a deployer's own files beside it.
    void deploy(const PropertyList::Dictionary &info)
    {
        const PropertyList::Dictionary services{{"MIPEME_APP_ID", std::string("1:2:linux:3")}};
        program = folder / "skyflare-watch";
        std::filesystem::copy_file(SKYFLARE_WATCH, program, std::filesystem::copy_options::skip_existing);
        REQUIRE(replaceFile(folder / "Info.plist", PropertyList(info).serialize()));
        REQUIRE(replaceFile(folder / "MipemeService-Info.plist", PropertyList(services).serialize()));
    }

    /// What --analytics-status says; the ledger balances, or it would not succeed.
    [[nodiscard]] nlohmann::json status() const
    {
        return nlohmann::json::parse(output(command({"--analytics-status", "--json"})).at(0));
    }

    /// What a program prints that is to succeed without a complaint.
    static std::vector<std::string> output(const std::vector<std::string> &arguments)
    {
        ChildProcess process(arguments);
        auto lines = process.readAll();
        const int status = process.wait();
        CAPTURE(process.errors());
        CHECK(status == 0);
        CHECK(process.errors().empty());
        return lines;
    }

    /// Encodes a film with H.264, B-frames included: 30 frames a second, dark, with bright frames where
    /// `bright`, an expression of ffmpeg's over the frame number N, is 1. @return its path
    [[nodiscard]] std::string film(const std::string &name, int frames, const std::string &bright) const
    {
        return make(name, "-f lavfi -i \"nullsrc=s=320x180:r=30,geq=lum='40+mod(X*7+Y*3+N,16)+120*(" +
                              bright + ")':cb=128:cr=128\" -frames:v " + std::to_string(frames) +
                              " -c:v libx264 -bf 2 -g 30 -crf 12 -pix_fmt yuv420p -movflags +faststart");
    }

    /// "UUID|SIZE" of each stored photo that is there to its end; the size as the PNG's header has it, 16
    /// digits.
    [[nodiscard]] std::vector<std::string> storedPhotos() const
    {
        return output({"sqlite3", folder / "data/data/Storage.sqlite",
                       "SELECT uuid, hex(substr(photoData, 17, 8)) FROM PhotoEntity "
                       "WHERE hex(substr(photoData, -12)) = '0000000049454E44AE426082'"});
    }
};

} // namespace skyflare
