#include "platform/base/Localization.h"

#include "platform/linux/ProgramFiles.h"
#include "tests/fakes/RecordingConsole.h"
#include "tests/fakes/TemporaryFolder.h"

#include <doctest/doctest.h>
#include <nlohmann/json.hpp>
#include <system_error>

#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

using namespace skyflare;

namespace {

using Languages = std::vector<std::string>;

Languages languagesOf(const std::map<std::string, std::string> &environment)
{
    return preferredLanguages([&](const char *name) {
        const auto found = environment.find(name);
        return found == environment.end() ? nullptr : found->second.c_str();
    });
}

std::string contentOf(const std::filesystem::path &file)
{
    std::ifstream in(file);
    return {std::istreambuf_iterator<char>(in), {}};
}

std::map<std::string, std::string> tableIn(const std::filesystem::path &file)
{
    return nlohmann::json::parse(contentOf(file));
}

/// The texts that a piece of code looks up by their own words.
void addKeys(const std::string &code, std::set<std::string> &keys)
{
    constexpr std::string_view call = "localized(";
    for (auto at = code.find(call); at != code.npos; at = code.find(call, at + 1)) {
        auto begin = code.find_first_not_of(" \n", at + call.size());
        std::string key;
        while (begin != code.npos && code[begin] == '"') { // literals in a row are one
            const auto end = code.find('"', begin + 1);
            key += code.substr(begin + 1, end - begin - 1);
            begin = code.find_first_not_of(" \n", end + 1);
        }
        if (!key.empty())
            keys.insert(key);
    }
}

std::set<std::string> keysInCode(const std::filesystem::path &root)
{
    std::set<std::string> keys;
    for (const auto *folder : {"app", "capture", "platform", "screens", "ui"}) {
        std::error_code missing;
        for (const auto &entry : std::filesystem::recursive_directory_iterator(root / folder, missing))
            if (entry.path().extension() == ".cpp" || entry.path().extension() == ".h")
                addKeys(contentOf(entry.path()), keys);
    }
    return keys;
}

struct TablesFixture {
    TemporaryFolder folder;
    RecordingConsole console;

    TablesFixture()
    {
        write("en.json", R"({"Start": "Start", "step0_text2": "Welcome."})");
        write("tr.json", R"({"Start": "Başlat", "step0_text2": "Hoş geldiniz."})");
        write("de.json", R"({"Start": "Los"})");
        write("es.json", R"({"Start": )");
        write("ja.json", R"({"Start": 1})");
        write("pt_BR.json", R"({"Start": "Iniciar"})");
    }
    void write(const std::string &file, const std::string &content)
    {
        std::ofstream(folder / file) << content;
    }
    Localization load(const Languages &languages)
    {
        return Localization::load(folder.path(), languages, console);
    }
};

} // namespace

TEST_CASE("the user's languages are those of the environment")
{
    CHECK(languagesOf({}).empty());
    CHECK(languagesOf({{"LANG", "tr_TR.UTF-8"}}) == Languages{"tr_TR"});
    CHECK(languagesOf({{"LANG", "tr_TR.UTF-8"}, {"LC_MESSAGES", "de_DE@euro"}}) == Languages{"de_DE"});
    CHECK(languagesOf({{"LC_ALL", "ja_JP.eucJP"}, {"LC_MESSAGES", "de_DE"}}) == Languages{"ja_JP"});
    CHECK(languagesOf({{"LC_ALL", ""}, {"LANG", "tr_TR"}}) == Languages{"tr_TR"});
    CHECK(languagesOf({{"LANGUAGE", "es:tr_TR::de"}, {"LANG", "en_GB.UTF-8"}}) ==
          Languages{"es", "tr_TR", "de", "en_GB"});
    CHECK(languagesOf({{"LANGUAGE", "tr"}, {"LC_ALL", "C"}}) == Languages{"en"});
    CHECK(languagesOf({{"LANGUAGE", "tr"}, {"LANG", "C.UTF-8"}}) == Languages{"tr", "en"});
    CHECK(languagesOf({{"LANGUAGE", "../../etc/passwd:tr"}}) == Languages{"tr"});
}

TEST_CASE_FIXTURE(TablesFixture,
                  "a text comes from the first language that has a table, else from the English one")
{
    // The user's languages; whose table, its "Start", its "step0_text2", how many reports.
    using Row = std::tuple<Languages, std::string, std::string, std::string, std::size_t>;
    for (const Row &row : std::initializer_list<Row>{
             {{}, "en", "Start", "Welcome.", 0},
             {{"tr_TR"}, "tr", "Başlat", "Hoş geldiniz.", 0},
             {{"fr_FR", "de_AT", "tr"}, "de", "Los", "Welcome.", 0}, // where a text is missing: English
             {{"pt_BR"}, "pt_BR", "Iniciar", "Welcome.", 0},
             {{"en_GB", "tr"}, "en", "Start", "Welcome.", 0},
             {{"es_ES", "tr"}, "tr", "Başlat", "Hoş geldiniz.", 1}, // damaged
             {{"ja"}, "en", "Start", "Welcome.", 1}}) {
        const auto &[languages, language, start, step, reports] = row;
        INFO(std::get<1>(row));
        console.clear();
        const Localization texts = load(languages);
        CHECK(texts.language() == language);
        CHECK(texts.text("Start") == start);
        CHECK(texts.text("step0_text2") == step);
        CHECK(texts.text("Nobody wrote this") == "Nobody wrote this");
        CHECK(console.reports().size() == reports);
    }
    std::filesystem::remove(folder / "en.json");
    CHECK(load({"tr"}).text("Start") == "Başlat");
    CHECK(console.reports().size() == 2);
}

TEST_CASE_FIXTURE(TablesFixture,
                  "the program's texts are its keys until a language is set, then that language's")
{
    CHECK(localized("Start") == "Start");
    Localization::setShared(load({"tr"}));
    CHECK(localized("Start") == "Başlat");
    CHECK(Localization::shared().language() == "tr");
    Localization::setShared({});
    CHECK(localized("Start") == "Start");
}

TEST_CASE("every table beside the program has every text, and the code asks for no other")
{
    const auto folder = ProgramFiles::standard().localization;
    const auto english = tableIn(folder / "en.json");
    std::set<std::string> languages;
    for (const auto &file : std::filesystem::directory_iterator(folder)) {
        CAPTURE(file.path().filename().string());
        languages.insert(file.path().stem());
        const auto table = tableIn(file.path());
        for (const auto &entry : english) {
            INFO(entry.first);
            REQUIRE(table.contains(entry.first));
            CHECK(!table.at(entry.first).empty());
            // An exclamation stays one.
            CHECK((table.at(entry.first).back() == '!') == (entry.second.back() == '!'));
        }
        CHECK(table.size() == english.size());
    }
    CHECK(languages.contains("tr"));
    for (const auto &[key, text] : english) // an English text is its own key
        CHECK((text == key || key.starts_with("step")));
    const auto keys = keysInCode(SOURCE_ROOT);
    CHECK(keys.contains("Fireworks detected!"));
    for (const std::string &key : keys) {
        CAPTURE(key);
        CHECK(english.contains(key));
    }
}
