#include "platform/base/LanguageName.h"

#include "platform/base/Handle.h"

#include <unicode/uldnames.h>
#include <unicode/unistr.h>
#include <unicode/ures.h>

#include <array>

namespace skyflare {

namespace {

using DisplayNames = Handle<ULocaleDisplayNames, &uldn_close>;
using Resources = Handle<UResourceBundle, &ures_close>;

/// Of a locale that it does not know ICU speaks as if it were the process's own.
bool isKnown(const std::string &locale)
{
    UErrorCode status = U_ZERO_ERROR;
    const Resources resources(ures_open(nullptr, locale.c_str(), &status));
    return U_SUCCESS(status) && status != U_USING_DEFAULT_WARNING;
}

} // namespace

std::optional<std::string> languageName(const std::string &language, const std::string &inLocale)
{
    if (!isKnown(inLocale))
        return std::nullopt;
    // Without a name ICU answers with the code itself, unless it is told to fail.
    std::array<UDisplayContext, 2> contexts{UDISPCTX_CAPITALIZATION_FOR_UI_LIST_OR_MENU,
                                            UDISPCTX_NO_SUBSTITUTE};
    UErrorCode status = U_ZERO_ERROR; // a warning, that a parent locale has answered, is no failure
    const DisplayNames names(
        uldn_openForContext(inLocale.c_str(), contexts.data(), static_cast<int>(contexts.size()), &status));
    std::array<UChar, 200> name{};
    const int length = uldn_localeDisplayName(names.get(), language.c_str(), name.data(),
                                              static_cast<int>(name.size()), &status);
    if (U_FAILURE(status) || length == 0)
        return std::nullopt;
    std::string utf8;
    icu::UnicodeString(name.data(), length).toUTF8String(utf8);
    return utf8;
}

} // namespace skyflare
