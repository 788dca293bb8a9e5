#include "platform/base/Localization.h"

#include "capture/Levels.h"
#include "platform/base/LanguageName.h"
#include "platform/linux/ProgramFiles.h"
#include "tests/fakes/RecordingConsole.h"
#include "tests/fakes/TemporaryFolder.h"

#include <doctest/doctest.h>
#include <nlohmann/json.hpp>

#include <fstream>
#include <iterator>
#include <regex>
#include <set>

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

/// The keys that calls of localized() name in the code; an empty one for each call that names none.
std::multiset<std::string> lookupsInCode(const std::filesystem::path &root)
{
    static const std::regex breaksOfLiterals(R"("\s+")"); // literals in a row are one
    static const std::regex call(R"(localized\(([^()]*(?:\([^()]*\)[^()]*)*)\))");
    static const std::regex literal("\"([^\"]*)\"");
    const std::sregex_iterator none;
    std::multiset<std::string> keys;
    for (const auto *folder : {"app", "capture", "platform", "screens", "ui"}) {
        for (const auto &entry : std::filesystem::recursive_directory_iterator(root / folder)) {
            const bool isCode = entry.path().extension() == ".cpp" || entry.path().extension() == ".h";
            if (!isCode || entry.path().stem() == "Localization") // which only defines it
                continue;
            const std::string code = std::regex_replace(contentOf(entry.path()), breaksOfLiterals, "");
            for (std::sregex_iterator found(code.begin(), code.end(), call); found != none; ++found) {
                const std::string arguments = (*found)[1];
                std::sregex_iterator key(arguments.begin(), arguments.end(), literal);
                if (key == none)
                    keys.emplace();
                for (; key != none; ++key)
                    keys.insert((*key)[1]);
            }
        }
    }
    return keys;
}

/// "%1", "{count}" and the like, sorted.
std::multiset<std::string> placeholders(const std::string &text)
{
    static const std::regex placeholder("%[0-9a-z@]+|\\{[^}]*\\}");
    return {std::sregex_token_iterator(text.begin(), text.end(), placeholder), {}};
}

struct TablesFixture {
    TemporaryFolder folder;
    RecordingConsole console;

    TablesFixture()
    {
        folder.write("en.json", R"({"Start": "Start", "step0_text2": "Welcome."})");
        folder.write("tr.json", R"({"Start": "Başlat", "step0_text2": "Hoş geldiniz."})");
        folder.write("de.json", R"({"Start": "Los"})");
        folder.write("es.json", R"({"Start": )");
        folder.write("ja.json", R"({"Start": 1})");
        folder.write("pt_BR.json", R"({"Start": "Iniciar"})");
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

TEST_CASE_FIXTURE(TablesFixture, "a text comes from the first language that has a table, else from English")
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

TEST_CASE("every table beside the program has every text, with the same placeholders")
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
            CHECK(placeholders(table.at(entry.first)) == placeholders(entry.second));
        }
        CHECK(table.size() == english.size());
        std::set<std::string> levels; // a level is found again by its title
        for (const SensitivityRow &row : sensitivityRows)
            levels.insert(table.at(std::string(row.title)));
        CHECK(levels.size() == 7);
    }
    CHECK(languages == std::set<std::string>{"de", "en", "es", "ja", "tr"});
    for (const auto &[key, text] : english) // an English text is its own key
        CHECK((text == key || key.starts_with("step")));
}

TEST_CASE("the code asks for the texts of the tables, for all of them and for no other")
{
    auto keys = lookupsInCode(SOURCE_ROOT);
    CHECK(keys.erase("") == 2); // of LevelTitles.h: keys in tables of data; elsewhere this test finds them
    for (const SensitivityRow &row : sensitivityRows)
        keys.emplace(row.title);
    for (const FrequencyRow &row : frequencyRows)
        keys.emplace(row.noun);
    const auto english = tableIn(ProgramFiles::standard().localization / "en.json");
    for (const std::string &key : keys) {
        CAPTURE(key);
        CHECK(english.contains(key));
    }
    for (const auto &entry : english) {
        INFO(entry.first);
        CHECK(keys.contains(entry.first));
    }
}

TEST_CASE("a language is called what its speakers' lists call it, or nothing")
{
    CHECK(languageName("de", "de_DE") == "Deutsch");
    CHECK(languageName("en", "tr") == "İngilizce");
    CHECK(languageName("es", "es_MX") == "Español");
    CHECK(languageName("pt_BR", "en_GB") == "Portuguese (Brazil)");
    CHECK(languageName("ja", "ja_JP") == "日本語");
    CHECK(languageName("xx", "en_GB") == std::nullopt);
    CHECK(languageName("en", "xx_YY") == std::nullopt);
    CHECK(languageName("", "en") == std::nullopt);
    CHECK(languageName("en", "") == std::nullopt);
}
