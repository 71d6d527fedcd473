// Stand-in for the host's library `avbase`: processor features and memory copy.

#include "avbase/avbase.h"

#include <cstring>

namespace AVBased {

extern "C" {

[[gnu::visibility("default")]] unsigned AVBasedGetCPUFeatures() {
    unsigned features = 0;
#if defined(__x86_64__)
    if (__builtin_cpu_supports("mmx")) features |= cpuFeatureMmx;
    if (__builtin_cpu_supports("sse2")) features |= cpuFeatureSse2;
#endif
    return features;
}

[[gnu::visibility("default")]] void* AVBasedMemCopy(void* destination, const void* source, unsigned length) {
    return length ? std::memcpy(destination, source, length) : destination;
}

}  // extern "C"

}  // namespace AVBased
