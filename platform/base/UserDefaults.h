#pragma once

#include "platform/base/Console.h"
#include "platform/base/PropertyList.h"

#include <cstdint>
#include <filesystem>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

namespace skyflare {

/// Settings by key, kept in one property-list file and written through at once.
///
/// Every setter writes the whole file: to a temporary name, synced, then renamed, so that a crash leaves
/// the old file or the new one. A file that is not a dictionary of settings is kept aside under the name
/// "<file>.damaged" (numbered, if that is taken) and reported; the settings then start empty. A file that
/// cannot be read, or not be kept aside, is left as it is: nothing is written in its place. What cannot be
/// written is reported, once; the values hold until the process ends.
///
/// A getter converts what it finds, as the phone's user defaults do:
/// - a number: true unless 0; truncated toward zero for an integer; in decimal as a string.
/// - a boolean: 1 or 0, as a string "1" or "0".
/// - a string: true if, after white space, a sign and zeros, it goes on with Y, y, T, t or a digit 1 to 9;
///   its leading number, else 0.
/// - anything else, or a missing key: false, 0, no string.
/// A number too large for an integer becomes the nearest one, one too large for a float infinite.
///
/// Threads: any.
class UserDefaults {
public:
    /// Reads `file`, which need not exist; its folder is made by the first write. Borrows `console`.
    UserDefaults(std::filesystem::path file, Console &console);

    [[nodiscard]] bool hasObjectForKey(std::string_view key) const;
    [[nodiscard]] std::optional<std::string> stringForKey(std::string_view key) const;
    [[nodiscard]] bool boolForKey(std::string_view key) const;
    [[nodiscard]] std::int64_t integerForKey(std::string_view key) const;
    [[nodiscard]] float floatForKey(std::string_view key) const;
    [[nodiscard]] double doubleForKey(std::string_view key) const;

    // setObject:forKey:, setBool:forKey: and so on
    void setObject(PropertyList value, std::string_view forKey);
    void setBool(bool value, std::string_view forKey);
    void setInteger(std::int64_t value, std::string_view forKey);
    void setFloat(float value, std::string_view forKey);
    void setDouble(double value, std::string_view forKey);
    void removeObjectForKey(std::string_view key);

private:
    const std::filesystem::path file_;
    Console &console_;
    mutable std::mutex mutex_;
    PropertyList::Dictionary values_;
    bool mayWrite_ = true; ///< not over a file whose contents could not be saved
    bool reportedUnwritable_ = false;

    void load();
    void keepAside(const std::string &why);
    void writeThrough();
    [[nodiscard]] const PropertyList *find(std::string_view key) const;
};

} // namespace skyflare
