#pragma once

#include <array>
#include <string_view>

namespace skyflare {

/// A name that belongs to the engine, and the short one that it is stored under.
struct ReservedName {
    std::string_view publicName;
    std::string_view storedName;
};

inline constexpr std::array<ReservedName, 32> reservedEventNames{{
    {"ad_activeview", "_aa"},
    {"ad_click", "_ac"},
    {"ad_exposure", "_xa"},
    {"ad_impression", "_ai"},
    {"ad_query", "_aq"},
    {"ad_reward", "_ar"},
    {"adunit_exposure", "_xu"},
    {"app_clear_data", "_cd"},
    {"app_exception", "_ae"},
    {"app_remove", "_ui"},
    {"app_store_refund", "_asr"},
    {"app_store_subscription_cancel", "_asse"},
    {"app_store_subscription_convert", "_assc"},
    {"app_store_subscription_renew", "_assr"},
    {"app_update", "_au"},
    {"app_upgrade", "_ug"},
    {"error", "_err"},
    {"firebase_campaign", "_cmp"},
    {"first_open", "_f"},
    {"first_visit", "_v"},
    {"ga_campaign", "_cmp"},
    {"ga_extra_parameter", "_ep"},
    {"in_app_purchase", "_iap"},
    {"notification_dismiss", "_nd"},
    {"notification_foreground", "_nf"},
    {"notification_open", "_no"},
    {"notification_receive", "_nr"},
    {"os_update", "_ou"},
    {"screen_view", "_vs"},
    {"session_start", "_s"},
    {"session_start_with_rollout", "_ssr"},
    {"user_engagement", "_e"},
}};

/// Reserved, and yet the app may log them.
inline constexpr std::string_view screenViewEvent = "screen_view";
inline constexpr std::array<std::string_view, 1> loggableReservedEvents{"ad_impression"};

inline constexpr std::array<ReservedName, 10> reservedUserProperties{{
    {"firebase_last_notification", "_ln"},
    {"first_open_after_install", "_fi"},
    {"first_open_time", "_fot"},
    {"ga_session_id", "_sid"},
    {"ga_session_number", "_sno"},
    {"last_advertising_id_reset", "_lair"},
    {"last_deep_link_referrer", "_ldl"},
    {"lifetime_user_engagement", "_lte"},
    {"session_user_engagement", "_se"},
    {"user_id", "_id"},
}};

inline constexpr std::array<std::string_view, 3> reservedPrefixes{"firebase_", "mipeme_", "ga_"};

/// The only events that may carry an array parameter, and its only name.
inline constexpr std::array<std::string_view, 20> ecommerceEvents{
    "add_payment_info",  "add_shipping_info",  "add_to_cart",    "add_to_wishlist",  "begin_checkout",
    "checkout_progress", "ecommerce_purchase", "purchase",       "purchase_refund",  "refund",
    "remove_from_cart",  "select_content",     "select_item",    "select_promotion", "set_checkout_option",
    "view_cart",         "view_item",          "view_item_list", "view_promotion",   "view_search_results",
};
inline constexpr std::string_view itemsParameter = "items";

/// Whatever else an item holds is a custom parameter of it.
inline constexpr std::array<std::string_view, 33> ecommerceParameters{
    "affiliation",   "checkout_option", "checkout_step",  "coupon",         "creative_name",
    "creative_slot", "currency",        "discount",       "index",          "item_brand",
    "item_category", "item_category2",  "item_category3", "item_category4", "item_category5",
    "item_id",       "item_list",       "item_list_id",   "item_list_name", "item_location_id",
    "item_name",     "item_variant",    "location_id",    "payment_type",   "price",
    "promotion_id",  "promotion_name",  "quantity",       "shipping",       "shipping_tier",
    "tax",           "transaction_id",  "value",
};

[[nodiscard]] bool isReservedEventName(std::string_view name);
[[nodiscard]] bool isReservedUserProperty(std::string_view name);
[[nodiscard]] bool isEcommerceEvent(std::string_view name);
[[nodiscard]] bool isEcommerceParameter(std::string_view name);

/// "_vs" for "screen_view"; a name that is not reserved is stored as it is.
[[nodiscard]] std::string_view storedEventName(std::string_view publicName);
[[nodiscard]] std::string_view storedUserPropertyName(std::string_view publicName);

} // namespace skyflare
