// Stand-in for the host's library `avbase`: processor features and memory copy.

#include "avbase/avbase.h"

#include <cstring>

namespace AVBased {

extern "C" {

[[gnu::visibility("default")]] unsigned AVBasedGetCPUFeatures() {
    // For the module these bits choose how some effects round, not which instructions run. Every processor that it is
    // built for has vectors, and all of them are to give the same bytes.
    return cpuFeatureMmx | cpuFeatureSse2;
}

[[gnu::visibility("default")]] void* AVBasedMemCopy(void* destination, const void* source, unsigned length) {
    return length ? std::memcpy(destination, source, length) : destination;
}

}  // extern "C"

}  // namespace AVBased
