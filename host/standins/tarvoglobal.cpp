// Stand-in for the host's global support library: one exception object a thread.

#include <memory>

#include "TarvoBased/CBaseException.h"

namespace TarvoBased {
namespace {

thread_local std::unique_ptr<CBaseException> current;

}  // namespace

extern "C" {

[[gnu::visibility("default")]] ITarvoException* GetTarvoException() {
    if (!current) current = std::make_unique<CBaseException>(0, "", 0, "");
    return current.get();
}

[[gnu::visibility("default")]] void ReleaseTarvoException() { current.reset(); }

}  // extern "C"

}  // namespace TarvoBased
