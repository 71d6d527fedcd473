#include "bench/peers/peers.h"

#include <string>

#include "bench/harness/report.h"

namespace Bench {

void RegisterPeer(const char* row, const Work& packed, const Work& planar, unsigned planarFormat, unsigned planarUnit) {
    const auto add = [row](const char* layout, const Work& work, unsigned format, unsigned unit) {
        if (!work) return;
        const Measured measured{format, [work] { return work; }, 0, unit};
        benchmark::RegisterBenchmark((row + std::string(layout)).c_str(), [measured](benchmark::State& state) {
            Measure(state, measured);
        })->UseManualTime();
    };
    add("/packed", packed, formatPacked, allPlanes);
    add("/planar", planar, planarFormat, planarUnit);
}

}  // namespace Bench

int main(int argc, char** argv) {
#ifdef NIFIKRAL_PEER_OPENCV
    Bench::RegisterOpenCv();
#endif
#ifdef NIFIKRAL_PEER_LIBYUV
    Bench::RegisterLibyuv();
#endif
#ifdef NIFIKRAL_PEER_FFMPEG
    Bench::RegisterFfmpeg();
#endif
    return Bench::RunAll(argc, argv);
}
