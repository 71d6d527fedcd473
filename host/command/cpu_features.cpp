#include "host/command/cpu_features.h"

#include <dlfcn.h>

#include <optional>

#include "avbase/avbase.h"

namespace Nifikral {
namespace {

std::optional<unsigned> cpuFeatures;

}  // namespace

void OverrideCpuFeatures(unsigned features) { cpuFeatures = features; }

}  // namespace Nifikral

// This program's own definition, which the module's imported reference finds before the support library's.
extern "C" [[gnu::visibility("default")]] unsigned AVBasedGetCPUFeatures() {
    if (Nifikral::cpuFeatures) return *Nifikral::cpuFeatures;
    static const auto original = reinterpret_cast<unsigned (*)()>(dlsym(RTLD_NEXT, "AVBasedGetCPUFeatures"));
    return original ? original() : 0;
}
