#include "analytics/worker/MeasurementLimits.h"

namespace skyflare {

MeasurementLimits MeasurementLimits::of(const APMRemoteConfig &settings)
{
    using S = APMSetting;
    return {
        .validation = {.publicValueLength = settings.count(S::MaxEventParameterValueLength),
                       .publicEventParameters = settings.count(S::MaxPublicEventParams),
                       .customItemParameters = settings.count(S::MaxItemScopedCustomParameters),
                       .allowsCustomItemParameters =
                           settings.isOn(APMSwitch::ItemScopedCustomParameterEnabled)},
        .store = {.maxStoredEvents = settings.integer(S::MaxStoredEventsPerApp),
                  .staleDataDeletionInterval = settings.number(S::StaleDataDeletionInterval),
                  .maxQueueTime = settings.number(S::MaxQueueTime)},
        .daily = DailyLimits::of(settings),
        .publicEventNames = settings.integer(S::MaxEventNameCardinality),
        .publicUserProperties = settings.integer(S::MaxPublicUserProperties),
    };
}

} // namespace skyflare
