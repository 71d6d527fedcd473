#include "bridges/python/library.h"

#include "bridges/common/bridged_effect.h"
#include "host/base/errors.h"
#include "host/films/media_manager.h"

namespace Nifikral::Python {

const EffectModule& TheModule() {
    // Both stay to the end of the process: threads may work while it ends.
    static MediaManager& manager = *new MediaManager;
    static const BridgeModule& loaded = *new BridgeModule(TheBridgeModule(&manager));
    if (!loaded.module) throw HostError(ExitCode::Failed, loaded.error);
    return *loaded.module;
}

}  // namespace Nifikral::Python
