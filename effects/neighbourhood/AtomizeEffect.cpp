#include "effects/neighbourhood/AtomizeEffect.h"

#include <vector>

#include "effects/base/place_hash.h"
#include "effects/base/shared_samples.h"

namespace AVBased {
namespace {

constexpr Property<AtomizeSettings> atomizeProperties[] = {
    {"atomize_radius", "6", &AtomizeSettings::radius},
    {"atomize_seed", "0", &AtomizeSettings::seed},
};

// -radius to radius, from the sum of two random bytes.
int Distance(std::uint32_t bytes, int radius) {
    return ((int((bytes & 255) + (bytes >> 8 & 255)) - 255) * (2 * radius + 1) + 256) >> 9;
}

// Where the samples of one row come from: the column, and the row from `radius` luma rows above on.
void Aim(std::uint32_t* __restrict columns, std::uint16_t* __restrict rows, unsigned width, RowHash hash, int radius,
         unsigned shift) {
    const int last = int(width) - 1;
    for (unsigned x = 0; x < width; ++x) {
        const std::uint32_t random = hash(x << shift);
        columns[x] = std::uint32_t(std::clamp((int(x << shift) + Distance(random, radius)) >> shift, 0, last));
        rows[x] = std::uint16_t(Distance(random >> 16, radius) + radius);
    }
}

// Rows are written from the top down, so of the rows that they show those above are kept.
template <class Sample>
void Scatter(const PlaneView<Sample>& plane, unsigned columnShift, unsigned rowShift, const FrameHash& hash, int radius,
             InstructionSet set) {
    if (plane.width == 0 || plane.height == 0) return;
    const auto aim = variantsOf<Aim>.For(set);
    const std::size_t width = plane.width, kept = std::min(unsigned(radius), plane.height) + 1;
    std::vector<Sample> untouched(kept * width);
    std::vector<const Sample*> shown(std::size_t(2 * radius) + 1);
    std::vector<std::uint32_t> columns(width);
    std::vector<std::uint16_t> rows(width);
    for (unsigned y = 0; y < plane.height; ++y) {
        std::copy_n(plane.Row(y), width, &untouched[y % kept * width]);
        const int lumaRow = int(y << rowShift);
        for (int i = 0; i <= 2 * radius; ++i) {
            const auto row = unsigned(std::clamp((lumaRow + i - radius) >> rowShift, 0, int(plane.height) - 1));
            shown[std::size_t(i)] = row > y ? plane.Row(row) : &untouched[row % kept * width];
        }
        aim(columns.data(), rows.data(), plane.width, hash.Row(0, unsigned(lumaRow)), radius, columnShift);
        Sample* const to = plane.Row(y);
        for (std::size_t x = 0; x < width; ++x) to[x] = shown[rows[x]][columns[x]];
    }
}

}  // namespace

CAtomizeVideoImageEffect::CAtomizeVideoImageEffect() : CSettingsEffect(effectNameAtomize, atomizeProperties) {}

void CAtomizeVideoImageEffect::InnerProcFrame(ImagePostion*, int position, IRawVideoFrame* frame) {
    if (position == noPosition) position = frame->GetTimeStamp();
    const int radius = std::clamp(m_settings.radius, 0, 255);
    if (radius == 0) return;
    const FrameHash hash(m_settings.seed, position);
    ForEachPlane(*frame, Planes::All, [&](const auto& plane, const SharedAxis& columns, const SharedAxis& rows) {
        Scatter(plane, columns.shift, rows.shift, hash, radius, Instructions());
    });
}

}  // namespace AVBased
