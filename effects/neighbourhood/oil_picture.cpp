#include "effects/neighbourhood/oil_picture.h"

#include <algorithm>

#include "effects/base/shared_samples.h"

namespace AVBased {
namespace {

void SplitPixels(const Rgba32* row, unsigned count, std::uint8_t* __restrict blue, std::uint8_t* __restrict green,
                 std::uint8_t* __restrict red) {
    for (unsigned x = 0; x < count; ++x) {
        const std::uint32_t word = LoadWord(row + x);
        blue[x] = std::uint8_t(Blue(word));
        green[x] = std::uint8_t(Green(word));
        red[x] = std::uint8_t(Red(word));
    }
}

void JoinPixels(Rgba32* __restrict row, unsigned count, const std::uint8_t* blue, const std::uint8_t* green,
                const std::uint8_t* red) {
    for (unsigned x = 0; x < count; ++x) StoreWord(row + x, WithAlphaOf(0, blue[x], green[x], red[x]));
}

// Each sample 2^shift times.
template <unsigned shift>
void Widen(const std::uint8_t* from, unsigned count, std::uint8_t* __restrict to) {
    for (unsigned x = 0; x < count; ++x)
        for (unsigned k = 0; k < 1u << shift; ++k) to[(std::size_t(x) << shift) + k] = from[x];
}

// The last of each 2^shift samples.
template <unsigned shift>
void Narrow(const std::uint8_t* from, unsigned count, std::uint8_t* __restrict to) {
    for (unsigned x = 0; x < count; ++x) to[x] = from[(std::size_t(x) << shift) + (1u << shift) - 1];
}

}  // namespace

PackedOilPicture::PackedOilPicture(const PackedView& view, InstructionSet set) : m_view(view), m_set(set) {
    width = view.width;
    height = view.height;
    intensity = 1;
}

void PackedOilPicture::Read(unsigned y, std::uint8_t* const channel[3]) {
    variantsOf<SplitPixels>.For(m_set)(m_view.Row(y), width, channel[0], channel[1], channel[2]);
}

void PackedOilPicture::Write(unsigned y, const std::uint8_t* const channel[3]) {
    variantsOf<JoinPixels>.For(m_set)(m_view.Row(y), width, channel[0], channel[1], channel[2]);
}

PlanarOilPicture::PlanarOilPicture(const PlanarView& view, InstructionSet set)
    : m_luma(view.plane[0]), m_chroma{view.plane[1], WithPitchOf(view.plane[1], view.plane[2])} {
    width = m_luma.width;
    height = m_luma.height;
    columnShift = view.columnShift;
    rowShift = view.rowShift;
    WithConstantShift(columnShift, [&](auto shift) {
        m_widen = variantsOf<Widen<shift>>.For(set);
        m_narrow = variantsOf<Narrow<shift>>.For(set);
    });
    for (auto& wide : m_wide) wide.resize(width);
}

void PlanarOilPicture::Read(unsigned y, std::uint8_t* const channel[3]) {
    std::copy_n(m_luma.Row(y), width, channel[0]);
    for (unsigned p = 0; p < 2; ++p) {
        if (y >> rowShift << rowShift == y) ReadChroma(m_chroma[p], y >> rowShift, m_wide[p]);
        std::copy_n(m_wide[p].data(), width, channel[1 + p]);
    }
}

void PlanarOilPicture::Write(unsigned y, const std::uint8_t* const channel[3]) {
    std::copy_n(channel[0], width, m_luma.Row(y));
    const bool lastOfItsRow = y + 1 == height || y >> rowShift != (y + 1) >> rowShift;
    if (!lastOfItsRow) return;
    for (unsigned p = 0; p < 2; ++p) WriteChroma(m_chroma[p], y >> rowShift, channel[1 + p]);
}

// Repeats the samples so that each stands under its luma. Where a plane ends early its last ones serve; a row that
// serves twice is kept, since by then the plane may hold paint.
void PlanarOilPicture::ReadChroma(const ComponentView& plane, unsigned row, std::vector<std::uint8_t>& wide) const {
    if (!plane.Contains(0, row)) return;
    const unsigned whole = std::min(plane.width, width >> columnShift);
    m_widen(plane.Row(row), whole, wide.data());
    std::fill(wide.begin() + (std::ptrdiff_t(whole) << columnShift), wide.end(),
              plane.Row(row)[std::min(whole, plane.width - 1)]);
}

void PlanarOilPicture::WriteChroma(const ComponentView& plane, unsigned row, const std::uint8_t* from) const {
    if (row >= plane.height) return;
    const unsigned whole = std::min(plane.width, width >> columnShift);
    m_narrow(from, whole, plane.Row(row));
    if (whole < plane.width && whole << columnShift < width) plane.Row(row)[whole] = from[width - 1];
}

}  // namespace AVBased
