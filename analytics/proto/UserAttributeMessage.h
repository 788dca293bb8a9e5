#pragma once

#include "analytics/model/APMUserAttribute.h"
#include "platform/base/Bytes.h"

namespace skyflare {

/// A property of the user as the bytes of an APMPBUserAttribute.
///
/// Texts are written as UTF-8, whatever they were; an array is no value of a property and is left out.
/// Any bytes may be read: an error, or a property.
/// Threads: any.
struct UserAttributeMessage {
    static Bytes encode(const APMUserAttribute &attribute);
    static Result<APMUserAttribute> decode(std::span<const std::uint8_t> bytes);

    /// The value alone, as column "value" of table "user_attributes" holds it.
    static Bytes encodeValue(const APMValue &value);
    static Result<APMValue> decodeValue(std::span<const std::uint8_t> bytes);
};

} // namespace skyflare
