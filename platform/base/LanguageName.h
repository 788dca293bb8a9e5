#pragma once

#include <optional>
#include <string>

namespace skyflare {

/// What a language is called in another, as it stands alone in a list: "Türkçe" for "tr" in "tr_TR".
///
/// Both are locales such as "de", "pt_BR". Nothing where the other language has no name for it.
/// Any thread; the first call reads files of ICU's.
std::optional<std::string> languageName(const std::string &language, const std::string &inLocale);

} // namespace skyflare
