#pragma once

#include "platform/sqlite/Database.h"
#include "tests/app/DrivenApp.h"
#include "tests/fakes/TemporaryFolder.h"
#include "tests/fakes/WaitUntil.h"

#include <doctest/doctest.h>

#include <cstdint>
#include <memory>

namespace skyflare {

/// A folder for the files of an app, what is in it, and what every user of an app does.
struct AppFixture {
    static constexpr const char *caughtLine = "Logged event: catch_photo ";

    TemporaryFolder folder;
    std::filesystem::path pictures = folder / "Pictures/Skyflare";

    [[nodiscard]] AppSetup setup() const { return {.folder = folder.path()}; }

    [[nodiscard]] std::unique_ptr<Database> database() const
    {
        auto opened =
            Database::open(folder / "data/Storage.sqlite", OpenMode::Write, std::chrono::seconds(60));
        REQUIRE(opened);
        return std::move(*opened);
    }
    [[nodiscard]] std::int64_t storedPhotos() const
    {
        return database()->number("SELECT count(*) FROM PhotoEntity").value();
    }
    /// Whatever is in the folder for pictures.
    [[nodiscard]] std::vector<std::filesystem::path> savedFiles() const
    {
        return {std::filesystem::directory_iterator(pictures), {}};
    }
    /// Waits until the gallery counts as many photos as are stored.
    void seeAllCounted(DrivenApp &app) const
    {
        REQUIRE(waitUntil(
            [&] { return app.read("photoCountLabel") == '(' + std::to_string(storedPhotos()) + ')'; }));
    }

    static void passOnboarding(DrivenApp &app)
    {
        for (int step = 0; step < 4; ++step)
            app.click("onboarding");
        app.miss("onboarding");
    }
    static void chooseHighAndFivePhotos(DrivenApp &app)
    {
        app.click("sensivityButton");
        app.click("High");
        app.readUntil("sensivityButton", "Sensivity: High");
        app.click("frequencyButton");
        app.click("5 photos");
        app.readUntil("frequencyButton", "Capture Frequency: 5 photos");
    }
    static void start(DrivenApp &app)
    {
        app.click("Start");
        app.readUntil("mainButton", "Stop");
    }
    /// Ends it, as the title bar's button does.
    static void end(DrivenApp &app)
    {
        app.close();
        CHECK(app.wait() == 0);
        CHECK(app.complaints() == "");
    }
};

} // namespace skyflare
