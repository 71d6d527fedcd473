#include "effects/geometry/MagnifierEffect.h"

#include "effects/geometry/magnifier_plane.h"

namespace AVBased {
namespace {

constexpr Property<MagnifierSettings> magnifierProperties[] = {
    {"magnifier_r", "0", &MagnifierSettings::radius},
    {"magnifier_x", "0", &MagnifierSettings::x},
    {"magnifier_y", "0", &MagnifierSettings::y},
    {"magnifier_scale", "0", &MagnifierSettings::scale},
};

}  // namespace

CMagnifierVideoImageEffect::CMagnifierVideoImageEffect(unsigned cpuFeatures)
    : CSettingsEffect(effectNameMagnifier, magnifierProperties), m_vectorised(HasVectorUnit(cpuFeatures)) {}

void CMagnifierVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    const MagnifierSettings& s = m_settings;
    const bool nearest = s.TakesNearest();
    ForFrame(
        [&](const PackedView& picture) {
            if (!s.IsVisible(picture.width, picture.height)) return;
            // Deliberate: a glass cut by the left or upper edge begins at 1 when packed and mixed, so that column and
            // row 0 stay.
            const unsigned edge = nearest ? 0 : 1;
            const Mixing mixing = m_vectorised ? Mixing::TwoSteps : Mixing::FourWeights;
            const Glass glass{s, {s, s.x, picture.width, edge}, {s, s.y, picture.height, edge}};
            MagnifyPlane(glass, ColumnsOf(picture), RowsOf(picture), picture, nearest ? Mixing::Nearest : mixing,
                         Instructions());
        },
        [&](const PlanarView& picture) {
            const unsigned width = picture.plane[0].width, height = picture.plane[0].height;
            if (!s.IsVisible(width, height)) return;
            const Glass glass{s, {s, s.x, width, 0}, {s, s.y, height, 0}};
            // Deliberate: planar pictures have the fractions exchanged.
            const Mixing mixing = nearest ? Mixing::Nearest : Mixing::FourWeightsExchanged;
            for (unsigned p = 0; p < 3; ++p)
                MagnifyPlane(glass, ColumnsOf(picture, p), RowsOf(picture, p), picture.plane[p], mixing,
                             Instructions());
        },
        *frame);
}

}  // namespace AVBased
