#include "effects/geometry/MirageEffect.h"

#include <algorithm>
#include <optional>
#include <vector>

#include "effects/geometry/mirage_rows_avx2.h"

namespace AVBased {
namespace {

constexpr Property<MirageSettings> mirageProperties[] = {
    {"mirage_width", "10", &MirageSettings::width},
    {"mirage_alpha", "10", &MirageSettings::alpha},
};

struct Blending {
    std::uint16_t weight;
    InstructionSet set;
};

// Lays the enlarged copy over one plane, reading from `from`: the plane itself, or a copy of it.
template <class Sample>
void MiragePlane(const AxisMap& lumaColumns, const AxisMap& lumaRows, const SharedAxis& across, const SharedAxis& down,
                 const PlaneView<Sample>& plane, const PlaneView<Sample>& from, const Blending& blending) {
    std::vector<Sample> enlarged(across.size), own(across.size);
    const Overlay<Sample> overlay{
        {SharedMap(lumaColumns, across), across.size, blending.set}, across, blending.weight, enlarged.data()};
    const auto blend = variantsOf<BlendRows<Sample>, BlendRowsAvx2<Sample>>.For(blending.set);
    const AxisMap rows = SharedMap(lumaRows, down);
    const std::ptrdiff_t twoRows = 2 * std::ptrdiff_t(from.pitch);
    const auto at = [&](unsigned y, std::ptrdiff_t ahead) {
        return RowInWork<Sample>{plane.Row(y), from.Row(rows[y]), ahead, down.Count(y)};
    };
    const auto one = [&](const RowInWork<Sample>& work) { blend(overlay, {&work, 1}); };

    const InPlaceOrder order(rows);
    for (std::size_t i = 0; i < std::max(order.up.size(), order.down.size()); ++i) {
        RowInWork<Sample> turn[rowsTogether];
        unsigned count = 0;
        if (i < order.up.size()) turn[count++] = at(order.up[i], twoRows);
        if (i < order.down.size()) turn[count++] = at(order.down[i], -twoRows);
        if (turn[0].lumaRows == turn[count - 1].lumaRows)
            blend(overlay, {turn, count});
        else
            std::ranges::for_each(turn, one);
    }
    for (unsigned y : order.still) {
        RowInWork<Sample> work = at(y, twoRows);
        std::copy_n(work.from, across.size, own.data());
        work.from = own.data();
        one(work);
    }
}

}  // namespace

CMirageVideoImageEffect::CMirageVideoImageEffect() : CSettingsEffect(effectNameMirage, mirageProperties) {}

void CMirageVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    const std::uint32_t factor = m_settings.width + 200;
    if (m_settings.alpha > 100 || factor == 0) return;
    const Blending blending{std::uint16_t(((m_settings.alpha + 40) << 7) / 100), Instructions()};
    // Runs lay(columns, rows, from) with what to read: a copy only for a factor so large that its steps wrap round.
    const auto run = [&](const auto& picture, unsigned width, unsigned height, auto lay) {
        if (width == 0 || height == 0) return;
        const AxisMap columns = ZoomMap(factor, width), rows = ZoomMap(factor, height);
        std::optional<FrameCopy> copy;
        if (!std::ranges::is_sorted(rows)) copy.emplace(*frame);
        lay(columns, rows, copy ? copy->Of(picture) : picture);
    };
    ForFrame(
        [&](const PackedView& picture) {
            run(picture, picture.width, picture.height, [&](const auto& columns, const auto& rows, const auto& from) {
                MiragePlane(columns, rows, ColumnsOf(picture), RowsOf(picture), picture, from, blending);
            });
        },
        [&](const PlanarView& picture) {
            run(picture, picture.plane[0].width, picture.plane[0].height,
                [&](const auto& columns, const auto& rows, const auto& from) {
                    for (unsigned p = 0; p < 3; ++p) {
                        const SharedAxis across = ColumnsOf(picture, p), down = RowsOf(picture, p);
                        if (across.size && down.size)
                            MiragePlane(columns, rows, across, down, picture.plane[p], from.plane[p], blending);
                    }
                });
        },
        *frame);
}

}  // namespace AVBased
