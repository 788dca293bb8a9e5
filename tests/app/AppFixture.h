#pragma once

#include "platform/sqlite/Database.h"
#include "tests/app/DrivenApp.h"
#include "tests/fakes/TemporaryFolder.h"

#include <doctest/doctest.h>

#include <cstdint>
#include <memory>

namespace skyflare {

/// A folder for the files of an app, and what is in it.
struct AppFixture {
    TemporaryFolder folder;

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
};

} // namespace skyflare
