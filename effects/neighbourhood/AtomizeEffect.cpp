#include "effects/neighbourhood/AtomizeEffect.h"

#include <algorithm>
#include <vector>

#include "effects/base/place_hash.h"
#include "effects/base/shared_samples.h"

namespace AVBased {
namespace {

constexpr Property<AtomizeSettings> atomizeProperties[] = {
    {"atomize_radius", "6", &AtomizeSettings::radius},
    {"atomize_seed", "0", &AtomizeSettings::seed},
};

// So many luma columns beside one another take their steps from the same part of the table.
constexpr unsigned stretch = 1024;

// -255 to 255 of a byte, in 2^-17 of a sample: a share of 0 to 253 of the way to the radius.
int Step(std::uint32_t byte, int share, int radius, unsigned shift) {
    return ((2 * int(byte & 255) - 255) * share * (2 * radius + 1) + (1 << (16 + shift))) >> (17 + shift);
}

void FillSteps(std::int32_t* __restrict steps, unsigned count, RowHash hash, int radius, unsigned columnShift,
               unsigned rowShift, int pitch) {
    for (unsigned i = 0; i < count; ++i) {
        const std::uint32_t random = hash(i);
        const int part = int(random & 255), share = part * part * part >> 16;
        steps[i] = Step(random >> 8, share, radius, columnShift) + Step(random >> 16, share, radius, rowShift) * pitch;
    }
}

// A plane's rows around the one in work, untouched, each with the nearest sample repeated at its ends.
template <class Sample>
class Band {
 public:
    Band(const PlaneView<Sample>& plane, unsigned across, unsigned down)
        : m_plane(plane),
          m_across(across),
          m_down(down),
          m_pitch(plane.width + 2 * std::size_t(across)),
          m_capacity(4 * down + 16),
          m_samples(m_pitch * m_capacity) {
        for (unsigned i = 0; i < 2 * down; ++i) Append();
    }
    std::size_t Pitch() const { return m_pitch; }
    /// The samples of the next row, with as many rows above and below as were asked for.
    const Sample* Next() {
        if (m_rows == m_capacity) {
            std::copy(&m_samples[(m_rows - 2 * m_down) * m_pitch], m_samples.data() + m_rows * m_pitch,
                      m_samples.data());
            m_rows = 2 * m_down;
        }
        Append();
        return &m_samples[(m_rows - m_down - 1) * m_pitch + m_across];
    }

 private:
    void Append() {
        const Sample* const row = m_plane.Row(std::min(std::max(m_appended++, m_down) - m_down, m_plane.height - 1));
        Sample* const to = &m_samples[m_rows++ * m_pitch];
        std::fill_n(to, m_across, row[0]);
        std::copy_n(row, m_plane.width, to + m_across);
        std::fill_n(to + m_across + m_plane.width, m_across, row[m_plane.width - 1]);
    }

    PlaneView<Sample> m_plane;
    unsigned m_across, m_down, m_appended = 0;
    std::size_t m_pitch, m_capacity, m_rows = 0;
    std::vector<Sample> m_samples;
};

template <class Sample, unsigned shift>
void Scatter(Sample* __restrict to, const Sample* __restrict from, const std::int32_t* __restrict steps,
             unsigned count) {
    for (std::size_t x = 0; x < count; ++x) to[x] = from[std::ptrdiff_t(x) + steps[x << shift]];
}

}  // namespace

void SpraySteps::Prepare(const Key& key, InstructionSet set) {
    if (!m_steps.empty() && key == m_key) return;
    m_steps.resize(places + stretch);
    m_key = key;
    variantsOf<FillSteps>.For(set)(m_steps.data(), unsigned(m_steps.size()), RowHash(MixBits(~key.seed)), key.radius,
                                   key.columnShift, key.rowShift, key.pitch);
}

CAtomizeVideoImageEffect::CAtomizeVideoImageEffect() : CSettingsEffect(effectNameAtomize, atomizeProperties) {}

void CAtomizeVideoImageEffect::InnerProcFrame(ImagePostion*, int position, IRawVideoFrame* frame) {
    if (position == noPosition) position = frame->GetTimeStamp();
    const int radius = std::clamp(m_settings.radius, 0, 255);
    if (radius == 0) return;
    const FrameHash hash(m_settings.seed, position);
    ForEachPlane(
        *frame, Planes::All,
        [&]<class Sample>(const PlaneView<Sample>& plane, const SharedAxis& columns, const SharedAxis& rows) {
            if (plane.width == 0 || plane.height == 0) return;
            const auto reach = [radius](unsigned shift) { return (unsigned(radius) + (1u << shift) - 1) >> shift; };
            Band<Sample> band(plane, reach(columns.shift), reach(rows.shift));
            SpraySteps& steps = m_steps[columns.shift + rows.shift ? 1 : 0];
            steps.Prepare({m_settings.seed, radius, columns.shift, rows.shift, int(band.Pitch())}, Instructions());
            WithConstantShift(columns.shift, [&](auto shift) {
                constexpr unsigned samples = stretch >> shift;
                for (unsigned y = 0; y < plane.height; ++y) {
                    const Sample* const from = band.Next();
                    const RowHash rowHash = hash.Row(0, y << rows.shift);
                    for (unsigned x = 0; x < plane.width; x += samples)
                        Scatter<Sample, shift>(plane.Row(y) + x, from + x, steps.At(rowHash(x / samples)),
                                               std::min(samples, plane.width - x));
                }
            });
        });
}

}  // namespace AVBased
