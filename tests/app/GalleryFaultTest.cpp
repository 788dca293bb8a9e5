// The photos where they are damaged, many, or changed by others; and a folder for pictures that takes none.

#include "tests/app/AppFixture.h"

using namespace skyflare;

namespace {

struct Store : AppFixture {
    /// That many newer photos, as another process adds them.
    void add(int count, const std::string &hexadecimal) const
    {
        const std::string sql =
            "WITH RECURSIVE numbers(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM numbers LIMIT " +
            std::to_string(count) +
            ") INSERT INTO PhotoEntity(uuid, createdDate, photoData) SELECT hex(randomblob(16)), "
            "(SELECT max(createdDate) FROM PhotoEntity) + i, x'" +
            hexadecimal + "' FROM numbers";
        REQUIRE(database()->execute(sql));
    }
    /// As another process does. @return how many there were
    [[nodiscard]] std::int64_t remove(const std::string &which) const
    {
        const auto store = database();
        REQUIRE(store->execute("DELETE FROM PhotoEntity WHERE " + which));
        return store->number("SELECT changes()").value();
    }
    void watchUntilOneIsCaught() const
    {
        CHECK(runProgram({SKYFLARE_WATCH, "--data-dir", folder.path().string(), "--camera", "simulated",
                          "--photos", "1", "--quiet"}) == 0);
    }
};

/// A PNG of 8 × 8 pixels of one colour.
constexpr const char *photo =
    "89504E470D0A1A0A0000000D49484452000000080000000808020000004B6D29DC000000114944415478DA63505048C0"
    "8A188696040091A92801E4EE74740000000049454E44AE426082";

} // namespace

TEST_CASE("a photo that the folder for pictures does not take is told, and nothing of it stays there")
{
    struct Row {
        std::string obstacle; ///< a command that makes it of the folder $PICTURES
        std::string popup;
    };
    const Row rows[] = {
        {"mount -t tmpfs -o ro none \"$PICTURES\"", "We need your permission"},
        {"mount -t tmpfs -o size=16k none \"$PICTURES\"", "We couldn't save your photo."},
    };
    if (runProgram({"unshare", "-rm", "true"}) != 0) {
        MESSAGE("NOT TESTED: this machine does not let us mount a disk of our own (unshare -rm)");
        return;
    }
    for (const Row &row : rows) {
        CAPTURE(row.obstacle);
        const Store store;
        std::filesystem::create_directories(store.pictures);
        AppSetup setup = store.setup();
        setup.environment = {"PICTURES=" + store.pictures.string(), "unshare", "-rm", "sh", "-ec",
                             row.obstacle + "; exec \"$@\"",        "sh"};
        DrivenApp app(setup);
        AppFixture::passOnboarding(app);
        store.watchUntilOneIsCaught();
        app.click("lastPhotoButton");
        app.click("PhotoCell");
        app.click("Save to Photos");
        app.see(row.popup);
        app.press("Escape");
        app.miss(row.popup);
        app.seeFocus("saveButton");
        const std::filesystem::path itsRoot = "/proc/" + std::to_string(app.process().pid()) + "/root";
        CHECK(std::filesystem::is_empty(itsRoot / store.pictures.relative_path()));
        AppFixture::end(app);
        CHECK(app.count("Logged event: photo_saved ") == 0);
    }
}

TEST_CASE_FIXTURE(Store,
                  "what others do to the photos is shown: one added, a damaged one, 5,000, all gone in a run")
{
    DrivenApp app(setup());
    passOnboarding(app);
    watchUntilOneIsCaught();
    app.click("lastPhotoButton");
    seeAllCounted(app);

    add(1, std::string(photo, 90)); // cut off: nothing to show
    add(1, std::string(photo).replace(86, 8, "FFFFFFFF"));
    seeAllCounted(app);
    app.see("PhotoCell#2");
    app.miss("PhotoCell#3");
    app.press("Home");
    app.press("Return");
    app.see("damagedLabel");
    app.press("Delete");
    app.click("Delete");
    app.miss("PhotoCell#2");

    add(4998, photo);
    app.readUntil("photoCountLabel", "\\(5000\\)");
    app.see("PhotoCell#20");
    CHECK(remove("objectID % 2 = 0") == 2500);
    seeAllCounted(app);
    app.click("Delete All");
    app.click("Yes, Delete All");
    app.readUntil("photoCountLabel", "\\(0\\)");
    app.miss("PhotoCell");
    app.press("Escape");

    chooseHighAndFivePhotos(app);
    start(app);
    app.waitForLine(caughtLine, 2);
    const std::int64_t gone = remove("true");
    do
        app.waitForLine(caughtLine, app.count(caughtLine) + 1);
    while (storedPhotos() < 2); // caught since
    app.press("Space");
    app.readUntil("mainButton", "Start");
    app.see("lastPhotoButton");
    end(app);
    CHECK(gone >= 2);
    CHECK(gone + storedPhotos() == static_cast<std::int64_t>(app.count(caughtLine)));
}
