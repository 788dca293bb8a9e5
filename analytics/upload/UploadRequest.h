#pragma once

#include "analytics/proto/APMMetadata.h"
#include "analytics/upload/APMRemoteConfig.h"
#include "analytics/upload/UploadHost.h"
#include "platform/net/HttpTransport.h"

#include <string_view>

namespace skyflare {

// The engine's two requests, as docs/wire-format.md has them. Threads: any.

/// @param body  an APMPBMeasurementBatch, in gzip
/// @param subdomain  of the host, as the server names it; may be empty
[[nodiscard]] HttpRequest uploadRequest(const UploadHost &host, std::string_view subdomain, Bytes body,
                                        const APMRemoteConfig &settings);

/// Of the settings.
[[nodiscard]] HttpRequest configurationRequest(const UploadHost &host, const APMAppData &app,
                                               const APMRemoteConfig &settings);

} // namespace skyflare
