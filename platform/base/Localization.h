#pragma once

#include "platform/base/Console.h"

#include <filesystem>
#include <functional>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace skyflare {

/// The user's languages, the dearest first, such as "tr_TR" or "de": those of LANGUAGE, then that of the
/// first of LC_ALL, LC_MESSAGES and LANG that is set. Where that is plain "C" or "POSIX", LANGUAGE says
/// nothing.
/// @param variable  an environment variable's value, or null
std::vector<std::string> preferredLanguages(const std::function<const char *(const char *)> &variable);

/// The texts of the user's language, and the English ones.
///
/// A table is a file such as "tr.json": one JSON object whose keys are the English texts (or names, such as
/// "step0_text2") and whose values are the texts in that language.
///
/// Threads: any; a value.
class Localization {
public:
    /// English texts alone: every text is its own.
    Localization() = default;

    /// Reads the table of the first of `languages` that has one, and the English one. A table that is
    /// damaged, or the English one missing, is reported, and the next language counts.
    static Localization load(const std::filesystem::path &folder, std::span<const std::string> languages,
                             Console &console);

    /// In the user's language, else in English, else the key itself.
    [[nodiscard]] std::string text(std::string_view key) const;

    /// Whose texts these are, as in its file's name: "tr".
    [[nodiscard]] const std::string &language() const { return language_; }

    /// What localized() answers from; before it is set, the keys. Again for another language.
    static void setShared(Localization localization);
    static Localization shared();

private:
    using Table = std::map<std::string, std::string, std::less<>>;

    std::string language_ = "en";
    Table texts_;
    Table english_;
};

/// A text for the user, in the user's language, of Localization::shared(). Any thread.
std::string localized(std::string_view key);

} // namespace skyflare
