#include "effects/BlurSharpenEffects.h"

#include "TarvoBased/res_keeper.h"
#include "effects/property_table.h"
#include "effects/row_loops.h"

namespace AVBased {
namespace {

constexpr int lineNoRows = 194;

constexpr Property<PassSettings> blurProperties[] = {{"blur_count", "1", &PassSettings::passes}};
constexpr Property<PassSettings> sharpenProperties[] = {{"sharpen_count", "1", &PassSettings::passes}};

// Both kernels are sums along the row, then down the column, so each row's sums serve the three rows around it.
struct Blur {
    static constexpr int RowSum(int left, int centre, int right) { return left + 2 * centre + right; }
    static constexpr int Sample(int above, int same, int below, int) { return (above + 2 * same + below) >> 4; }
};
struct Sharpen {
    static constexpr int RowSum(int left, int centre, int right) { return left + centre + right; }
    static constexpr int Sample(int above, int same, int below, int centre) {
        return std::clamp(10 * centre - (above + same + below), 0, 255);
    }
};

using Sum = std::int16_t;

// The sums of a row's `count` samples behind the first, where a sample's neighbours lie `step` bytes away.
template <class Kernel, std::size_t step>
void SumRow(Sum* __restrict sums, const std::uint8_t* __restrict row, std::size_t count) {
    for (std::size_t x = 0; x < count; ++x) sums[x] = Sum(Kernel::RowSum(row[x], row[x + step], row[x + 2 * step]));
}

// Filters `row` from the sums of the row above, its own, and those of the untouched row below; these then replace the
// sums of the row above.
template <class Kernel, std::size_t step>
void FilterRow(std::uint8_t* __restrict row, const std::uint8_t* __restrict below, Sum* __restrict above,
               const Sum* __restrict same, std::size_t count) {
    for (std::size_t x = 0; x < count; ++x) {
        const Sum next = Sum(Kernel::RowSum(below[x], below[x + step], below[x + 2 * step]));
        row[x + step] = std::uint8_t(Kernel::Sample(above[x], same[x], next, row[x + step]));
        above[x] = next;
    }
}

template <class Kernel, class Pixel>
void FilterPlane(PlaneView<Pixel> plane) {
    if (plane.width <= 2 || plane.height <= 2) return;
    constexpr std::size_t step = sizeof(Pixel);
    const std::size_t count = (plane.width - 2) * step;
    const TarvoBased::ResKeeper<Sum> memory(2 * count, lineNoRows);
    const auto row = [&](std::size_t y) { return reinterpret_cast<std::uint8_t*>(plane.Row(y)); };

    Sum *above = memory.get(), *same = above + count;
    SumRow<Kernel, step>(above, row(0), count);
    SumRow<Kernel, step>(same, row(1), count);
    const unsigned lastFiltered = plane.height % 2 ? plane.height - 2 : plane.height - 3;
    for (unsigned y = 1; y <= lastFiltered; ++y) {
        FilterRow<Kernel, step>(row(y), row(y + 1), above, same, count);
        std::swap(above, same);
    }
    // Deliberate: of an even height, the last row inside repeats the one above it.
    if (lastFiltered != plane.height - 2) std::memcpy(row(plane.height - 2) + step, row(lastFiltered) + step, count);
}

void BlurComponent(ComponentView plane) { FilterPlane<Blur>(plane); }
void BlurRgba32(PackedView picture) { FilterPlane<Blur>(picture); }
void SharpenComponent(ComponentView plane) { FilterPlane<Sharpen>(plane); }
void SharpenRgba32(PackedView picture) { FilterPlane<Sharpen>(picture); }

// Every plane finishes a pass before the next one begins. Fourth bytes and alpha planes are filtered like the others.
template <class Packed, class Planar>
void RunPasses(std::uint32_t passes, Packed packed, Planar component, IRawVideoFrame& frame) {
    ForFrame(
        [&](PackedView picture) {
            for (std::uint32_t pass = 0; pass < passes; ++pass) packed(picture);
        },
        [&](const PlanarView& picture) {
            for (std::uint32_t pass = 0; pass < passes; ++pass)
                for (unsigned p = 0; p < picture.planes; ++p) component(picture.plane[p]);
        },
        frame);
}

}  // namespace

void gauss_blur_component_c(unsigned char* data, unsigned width, unsigned pitch, unsigned height) {
    BlurComponent({data, width, pitch, height});
}

void laplacian_sharpen_component_c(unsigned char* data, unsigned width, unsigned pitch, unsigned height) {
    SharpenComponent({data, width, pitch, height});
}

CSimpleGaussBlurEffect::CSimpleGaussBlurEffect() : CBasedVideoImageEffect(effectNameSimpleGaussBlur) {
    DeclareProperties(*this, blurProperties);
}

void CSimpleGaussBlurEffect::OnSetProperty(const std::string& name, PropertyNode& node) {
    CBasedVideoImageEffect::OnSetProperty(name, node);
    StoreProperty(m_settings, blurProperties, name, node);
}

void CSimpleGaussBlurEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    RunPasses(m_settings.passes, Pick<BlurRgba32>(), Pick<BlurComponent>(), *frame);
}

CSimpleLaplacianSharpenEffect::CSimpleLaplacianSharpenEffect()
    : CBasedVideoImageEffect(effectNameSimpleLaplacianSharpen) {
    DeclareProperties(*this, sharpenProperties);
}

void CSimpleLaplacianSharpenEffect::OnSetProperty(const std::string& name, PropertyNode& node) {
    CBasedVideoImageEffect::OnSetProperty(name, node);
    StoreProperty(m_settings, sharpenProperties, name, node);
}

void CSimpleLaplacianSharpenEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    RunPasses(m_settings.passes, Pick<SharpenRgba32>(), Pick<SharpenComponent>(), *frame);
}

}  // namespace AVBased
