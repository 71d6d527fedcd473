#include "effects/ReliefEffect.h"

#include <cmath>
#include <numbers>
#include <vector>

#include "effects/fixed_point.h"
#include "effects/frame_views.h"
#include "effects/property_table.h"
#include "effects/row_loops.h"

namespace AVBased {
namespace {

constexpr Property<CReliefVideoImageEffect::Settings> properties[] = {
    {"relief_angle", "40", &CReliefVideoImageEffect::Settings::angle},
};

// In 16 bits: of a sample times 128 by twice a weight, the high half is floor(sample x weight / 256).
std::int16_t Share(std::int16_t sample128, std::int16_t weight2) { return std::int16_t(sample128 * weight2 >> 16); }

void AddRow(const ReliefLines& lines, unsigned bytes, unsigned char* finished) {
    const std::array<std::int16_t, 9> k = lines.weights;
    std::int16_t* const __restrict above = lines.above;
    std::int16_t* const __restrict here = lines.here;
    std::uint8_t* const __restrict out = finished;
    for (unsigned x = 0; x < bytes; ++x) {
        const auto l = std::int16_t(lines.left[x] << 7), m = std::int16_t(lines.middle[x] << 7),
                   r = std::int16_t(lines.right[x] << 7);
        out[x] = ClampToByte(above[x] + Share(l, k[6]) + Share(m, k[7]) + Share(r, k[8]));
        above[x] = std::int16_t(here[x] + Share(l, k[3]) + Share(m, k[4]) + Share(r, k[5]));
        here[x] = std::int16_t(Share(l, k[0]) + Share(m, k[1]) + Share(r, k[2]));
    }
}

// Filters a plane in one walk downwards and writes one row behind, so that it needs no copy of the frame: only the row
// in work as it came, with black at both ends for the terms that are missing there, and two rows of sums.
template <class Sample>
void Relief(const PlaneView<Sample>& plane, const ReliefKernel& kernel, ReliefRow* addRow) {
    constexpr unsigned step = sizeof(Sample);
    const unsigned bytes = plane.width * step;
    if (bytes == 0 || plane.height == 0) return;
    std::vector<std::uint8_t> line(bytes + 2 * step);
    std::vector<std::int16_t> sums(std::size_t(bytes) * 2);
    ReliefLines lines{line.data(), line.data() + step, line.data() + 2 * step, sums.data(), sums.data() + bytes, {}};
    for (unsigned i = 0; i < kernel.size(); ++i) lines.weights[i] = std::int16_t(2 * kernel[i]);

    const ComponentView rows{plane.data, bytes, plane.pitch, plane.height};
    for (unsigned y = 0; y < rows.height; ++y) {
        for (unsigned x = 0; x < bytes; x += cacheLine)
            PrefetchToWrite(rows.Row(y) + x, 2 * std::ptrdiff_t(rows.pitch));
        std::copy_n(rows.Row(y), bytes, line.data() + step);
        if constexpr (step == sizeof(Rgba32)) line[bytes + 2 * step - 1] = line[bytes + step - 1];
        // Above the first row there is none to write; the row itself, safe in the line by now, is written once more
        // later.
        addRow(lines, bytes, rows.Row(y == 0 ? 0 : y - 1));
    }
    // Below the last row everything is black, but for the fourth bytes of the nearest pixels, its own.
    for (std::size_t i = 0; i < line.size(); ++i)
        if (step == 1 || i % step != step - 1) line[i] = 0;
    addRow(lines, bytes, rows.Row(rows.height - 1));
}

}  // namespace

void ReliefComponentRow(const ReliefLines& lines, unsigned bytes, unsigned char* finished) {
    AddRow(lines, bytes, finished);
}

void ReliefRgba32Row(const ReliefLines& lines, unsigned bytes, unsigned char* finished) {
    AddRow(lines, bytes, finished);
    auto* const pixels = reinterpret_cast<Rgba32*>(finished);
    const auto* const right = reinterpret_cast<const Rgba32*>(lines.right);
    // Deliberate: the fourth byte is that of the last neighbour, below and to the right.
    for (unsigned x = 0; x < bytes / sizeof(Rgba32); ++x)
        StoreWord(pixels + x, (LoadWord(pixels + x) & ~alphaMask) | (LoadWord(right + x) & alphaMask));
}

CReliefVideoImageEffect::CReliefVideoImageEffect()
    : CBasedVideoImageEffect("relief"), m_kernel(Kernel(m_settings.angle)) {
    DeclareProperties(*this, properties);
}

ReliefKernel CReliefVideoImageEffect::Kernel(std::int32_t angle) {
    constexpr double pi = std::numbers::pi;
    const double x = (double(angle) + double(angle)) * pi / 360;
    const auto weight = [x](double turn) { return std::int32_t(std::cos(x + turn) * 256); };
    return {weight(pi / 4),     weight(pi / 2),
            weight(3 * pi / 4),  //
            weight(0),          256,
            weight(pi),  //
            weight(-pi / 4),    weight(-pi / 2),
            weight(-3 * pi / 4)};
}

void CReliefVideoImageEffect::OnSetProperty(const std::string& name, PropertyNode& node) {
    CBasedVideoImageEffect::OnSetProperty(name, node);
    if (StoreProperty(m_settings, properties, name, node)) m_kernel = Kernel(m_settings.angle);
}

void CReliefVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    ForFrame([this](const PackedView& picture) { Relief(picture, m_kernel, reliefRgba32Rows.For(Instructions())); },
             [this](const PlanarView& picture) {
                 for (unsigned p = 0; p < 3; ++p)
                     Relief(picture.plane[p], m_kernel, reliefComponentRows.For(Instructions()));
             },
             *frame);
}

}  // namespace AVBased
