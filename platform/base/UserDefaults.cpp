#include "platform/base/UserDefaults.h"

#include "platform/base/Files.h"
#include "platform/base/Text.h"

#include <system_error>

#include <cerrno>
#include <charconv>
#include <cmath>
#include <limits>

namespace skyflare {

namespace {

namespace fs = std::filesystem;

/// The text behind white space and a sign, and whether that was a minus.
struct Signed {
    std::string_view digits;
    bool negative = false;
};

Signed withoutSign(std::string_view text)
{
    text.remove_prefix(std::min(text.find_first_not_of(" \t\r\n\v\f"), text.size()));
    const bool hasSign = text.starts_with('-') || text.starts_with('+');
    return {text.substr(hasSign ? 1 : 0), text.starts_with('-')};
}

bool isDigit(char letter)
{
    return letter >= '0' && letter <= '9';
}

bool toBool(std::string_view text)
{
    std::string_view rest = withoutSign(text).digits;
    rest.remove_prefix(std::min(rest.find_first_not_of('0'), rest.size()));
    constexpr std::string_view yes = "YyTt123456789";
    return !rest.empty() && yes.find(rest.front()) != std::string_view::npos;
}

std::int64_t toInteger(double number)
{
    constexpr double limit = 0x1p63;
    if (std::isnan(number))
        return 0;
    if (number >= limit)
        return std::numeric_limits<std::int64_t>::max();
    if (number < -limit)
        return std::numeric_limits<std::int64_t>::min();
    return static_cast<std::int64_t>(number);
}

std::int64_t toInteger(std::string_view text)
{
    const auto [digits, negative] = withoutSign(text);
    std::uint64_t size = 0;
    const auto end = std::from_chars(digits.data(), digits.data() + digits.size(), size);
    if (end.ec == std::errc::invalid_argument)
        return 0;
    constexpr auto largest = std::numeric_limits<std::int64_t>::max();
    if (end.ec == std::errc::result_out_of_range || size > static_cast<std::uint64_t>(largest))
        return negative ? std::numeric_limits<std::int64_t>::min() : largest;
    return negative ? -static_cast<std::int64_t>(size) : static_cast<std::int64_t>(size);
}

double toDouble(std::string_view text)
{
    const auto [digits, negative] = withoutSign(text);
    const bool isNumber = !digits.empty() && (isDigit(digits[0]) || digits[0] == '.'); // neither inf nor nan
    double number = 0;
    if (isNumber)
        std::from_chars(digits.data(), digits.data() + digits.size(), number);
    return negative ? -number : number;
}

float toFloat(double number)
{
    if (std::abs(number) > static_cast<double>(std::numeric_limits<float>::max()))
        return std::copysign(std::numeric_limits<float>::infinity(), number > 0 ? 1.0F : -1.0F);
    return static_cast<float>(number);
}

std::string toText(double number)
{
    std::string text = shortestDecimal(number);
    return text.ends_with(".0") ? text.substr(0, text.size() - 2) : text;
}

double asDouble(const PropertyList &found)
{
    if (const auto *number = found.as<double>())
        return *number;
    if (const auto *integer = found.as<std::int64_t>())
        return static_cast<double>(*integer);
    if (const auto *boolean = found.as<bool>())
        return *boolean ? 1 : 0;
    const auto *text = found.as<std::string>();
    return text ? toDouble(*text) : 0;
}

} // namespace

UserDefaults::UserDefaults(fs::path file, Console &console) : file_(std::move(file)), console_(console)
{
    load();
}

void UserDefaults::load()
{
    const auto bytes = readFile(file_);
    if (!bytes) {
        const int code = bytes.error().code;
        if (code == ENOENT || code == ENOTDIR)
            return;
        mayWrite_ = false;
        console_.reportLine("settings: " + bytes.error().description() + "; they are left as they are");
        return;
    }
    auto list = PropertyList::parse(*bytes);
    if (!list)
        keepAside(list.error().message);
    else if (const auto *dictionary = list->as<PropertyList::Dictionary>())
        values_ = *dictionary;
    else
        keepAside("not a dictionary");
}

void UserDefaults::keepAside(const std::string &why)
{
    fs::path aside = file_.string() + ".damaged";
    std::error_code failure;
    for (int number = 2; fs::exists(fs::symlink_status(aside, failure)); ++number)
        aside = file_.string() + ".damaged." + std::to_string(number);
    fs::rename(file_, aside, failure);
    mayWrite_ = !failure;
    console_.reportLine("settings: " + file_.string() + " is damaged (" + why + "); " +
                        (failure ? "it cannot be kept aside and is left as it is: " + failure.message()
                                 : "kept aside as " + aside.string()));
}

void UserDefaults::writeThrough()
{
    if (!mayWrite_)
        return;
    const auto written = replaceFile(file_, PropertyList(values_).serialize());
    if (written || reportedUnwritable_)
        return;
    reportedUnwritable_ = true;
    console_.reportLine("settings: " + written.error().description() + "; they hold until the program ends");
}

const PropertyList *UserDefaults::find(std::string_view key) const
{
    const auto found = values_.find(key);
    return found == values_.end() ? nullptr : &found->second;
}

bool UserDefaults::hasObjectForKey(std::string_view key) const
{
    const std::scoped_lock lock(mutex_);
    return find(key) != nullptr;
}

std::optional<std::string> UserDefaults::stringForKey(std::string_view key) const
{
    const std::scoped_lock lock(mutex_);
    const PropertyList *found = find(key);
    if (!found)
        return {};
    if (const auto *text = found->as<std::string>())
        return *text;
    if (const auto *integer = found->as<std::int64_t>())
        return std::to_string(*integer);
    if (const auto *number = found->as<double>())
        return toText(*number);
    if (const auto *boolean = found->as<bool>())
        return *boolean ? "1" : "0";
    return {};
}

bool UserDefaults::boolForKey(std::string_view key) const
{
    const std::scoped_lock lock(mutex_);
    const PropertyList *found = find(key);
    if (!found)
        return false;
    if (const auto *text = found->as<std::string>())
        return toBool(*text);
    return asDouble(*found) != 0;
}

std::int64_t UserDefaults::integerForKey(std::string_view key) const
{
    const std::scoped_lock lock(mutex_);
    const PropertyList *found = find(key);
    if (!found)
        return 0;
    if (const auto *integer = found->as<std::int64_t>())
        return *integer;
    if (const auto *text = found->as<std::string>())
        return toInteger(std::string_view(*text));
    return toInteger(asDouble(*found));
}

float UserDefaults::floatForKey(std::string_view key) const
{
    return toFloat(doubleForKey(key));
}

double UserDefaults::doubleForKey(std::string_view key) const
{
    const std::scoped_lock lock(mutex_);
    const PropertyList *found = find(key);
    return found ? asDouble(*found) : 0;
}

void UserDefaults::setObject(PropertyList value, std::string_view forKey)
{
    const std::scoped_lock lock(mutex_);
    values_.insert_or_assign(std::string(forKey), std::move(value));
    writeThrough();
}

void UserDefaults::setBool(bool value, std::string_view forKey)
{
    setObject(PropertyList(value), forKey);
}

void UserDefaults::setInteger(std::int64_t value, std::string_view forKey)
{
    setObject(PropertyList(value), forKey);
}

void UserDefaults::setFloat(float value, std::string_view forKey)
{
    setObject(PropertyList(static_cast<double>(value)), forKey);
}

void UserDefaults::setDouble(double value, std::string_view forKey)
{
    setObject(PropertyList(value), forKey);
}

void UserDefaults::removeObjectForKey(std::string_view key)
{
    const std::scoped_lock lock(mutex_);
    const auto found = values_.find(key);
    if (found == values_.end())
        return;
    values_.erase(found);
    writeThrough();
}

} // namespace skyflare
