#include "effects/neighbourhood/ErodeDilateEffects.h"

#include "effects/base/shared_samples.h"
#include "effects/neighbourhood/ErodeDilateEffects_avx2.h"

namespace AVBased {
namespace {

// Deliberate, in both: the block is not centred on the sample, and the last two columns stay.
template <class Sample>
void Erode(const PlaneView<Sample>& plane, InstructionSet set) {
    const auto filter = variantsOf<FilterRow<Least, Sample>, FilterRowAvx2<Least, Sample>>.For(set);
    if (plane.width < 3) return;
    for (unsigned y = 0; y + 2 < plane.height; ++y)
        filter(plane.Bytes(y), plane.Bytes(y + 1), plane.Bytes(y + 2), (plane.width - 2) * sizeof(Sample),
               4 * std::ptrdiff_t(plane.pitch));
}

// From the last row upwards, so that the rows above are still as they came.
template <class Sample>
void Dilate(const PlaneView<Sample>& plane, InstructionSet set) {
    const auto filter = variantsOf<FilterRow<Greatest, Sample>, FilterRowAvx2<Greatest, Sample>>.For(set);
    if (plane.width < 3) return;
    for (unsigned y = plane.height; y > 2; --y)
        filter(plane.Bytes(y - 1), plane.Bytes(y - 2), plane.Bytes(y - 3), (plane.width - 2) * sizeof(Sample),
               -4 * std::ptrdiff_t(plane.pitch));
}

}  // namespace

void CErodeVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    ForEachPlane(*frame, Planes::Colours, [this](const auto& plane) { Erode(plane, Instructions()); });
}

void CDilateVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    ForEachPlane(*frame, Planes::Colours, [this](const auto& plane) { Dilate(plane, Instructions()); });
}

}  // namespace AVBased
