#include "analytics/upload/EngineVersion.h"

namespace skyflare {

std::string_view engineVersion()
{
    return SKYFLARE_ENGINE_VERSION;
}

} // namespace skyflare
