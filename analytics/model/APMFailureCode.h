#pragma once

namespace skyflare {

/// Why a name or value may not be recorded.
enum class FailureCode {
    Valid = 0,
    Missing = 1, ///< nil or empty
    TooLong = 2,
    IllegalCharacters = 3, ///< or not beginning with a letter
    Reserved = 4,          ///< name or prefix
    WrongType = 5,
    NotForwarded = 6, ///< an origin without the suffix "+gtm"
    TooShort = 7,
    NotNumeric = 8,
    BadCurrencyCode = 9,
    ArrayNotAllowed = 10, ///< on this event
    ArrayName = 11,       ///< is not "items"
    TooManyItems = 12,
    NestedArray = 13,
    ItemNotDictionary = 14,
};

/// Yes, or no and why.
struct [[nodiscard]] Verdict {
    FailureCode failureCode = FailureCode::Valid;
    explicit operator bool() const { return failureCode == FailureCode::Valid; }
    bool operator==(const Verdict &) const = default;
};

/// What an event's parameter "_err" says.
enum class APMErrorCode {
    NoError = 0,
    InvalidGMPAppID = 1,
    InvalidEventName = 2,
    InvalidParameterName = 3,
    InvalidParameterValue = 4,
    ParameterLimitReached = 5,
    InvalidUserPropertyName = 6,
    UserPropertyValueTooLong = 7,
    EventLimitReached = 8,
    UserPropertyLimitReached = 9,
    ConversionEventLimitReached = 10,
    EventIsBlocked = 11,
    UserPropertyIsBlocked = 12,
    EventNameIsReserved = 13,
    ParameterNameIsReserved = 14,
    UserPropertyNameIsReserved = 15,
    PublicEventLimitReached = 16,
    TooManyExtraParamEvents = 17,
    ValueIsNotNumeric = 18,
    CurrencyCodeIsMissingOrInvalid = 19,
    InvalidArrayParamName = 20,
    InvalidArrayParamEventName = 21,
    InvalidArrayParamNesting = 22,
    CustomParamsInArrayElement = 23,
    ItemScopedCustomParameterLimitReached = 24,
};

} // namespace skyflare
