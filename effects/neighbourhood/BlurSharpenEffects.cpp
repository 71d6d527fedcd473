#include "effects/neighbourhood/BlurSharpenEffects.h"

#include <algorithm>

#include "effects/base/shared_samples.h"
#include "effects/neighbourhood/BlurSharpenEffects_avx2.h"

namespace AVBased {
namespace {

constexpr Property<PassSettings> blurProperties[] = {{"blur_count", "1", &PassSettings::passes}};
constexpr Property<PassSettings> sharpenProperties[] = {{"sharpen_count", "1", &PassSettings::passes}};

template <class Kernel, std::size_t step>
struct PlainRows {
    static RowSum SumAt(const std::uint8_t* row) {
        return RowSum(row[0] + Kernel::centreWeight * row[step] + row[2 * step]);
    }

    static void Sum(RowSum* __restrict sums, const std::uint8_t* __restrict row, FilteredBytes filtered) {
        for (std::size_t x = 0; x < filtered.count; ++x) sums[x] = SumAt(row + x);
    }

    static void Filter(std::uint8_t* __restrict row, const std::uint8_t* __restrict below, RowSum* __restrict above,
                       const RowSum* __restrict same, FilteredBytes filtered) {
        for (std::size_t x = 0; x < filtered.count; ++x) {
            const RowSum next = SumAt(below + x), box = RowSum(above[x] + same[x] + next);
            std::uint8_t& sample = row[x + step];
            if constexpr (Kernel::sharpens)
                sample = std::uint8_t(std::clamp<RowSum>(RowSum(10 * sample - box), 0, 255));
            else
                sample = std::uint8_t((box + same[x]) >> 4);
            above[x] = next;
        }
    }
};

template <class Kernel, class Pixel>
constexpr auto filterPlane = variantsOf<FilterPlane<PlainRows, Kernel, Pixel>, FilterPlaneAvx2<Kernel, Pixel>>;

// Every plane finishes a pass before the next one begins. Fourth bytes and alpha planes are filtered like the others.
template <class Kernel>
void RunPasses(std::uint32_t passes, InstructionSet set, IRawVideoFrame& frame) {
    for (std::uint32_t pass = 0; pass < passes; ++pass)
        ForEachPlane(frame, Planes::All,
                     [&]<class Pixel>(const PlaneView<Pixel>& plane) { filterPlane<Kernel, Pixel>.For(set)(plane); });
}

}  // namespace

void gauss_blur_component_c(unsigned char* data, unsigned width, unsigned pitch, unsigned height) {
    filterPlane<BlurKernel, std::uint8_t>.For(BestInstructionSet())({data, width, pitch, height});
}

void laplacian_sharpen_component_c(unsigned char* data, unsigned width, unsigned pitch, unsigned height) {
    filterPlane<SharpenKernel, std::uint8_t>.For(BestInstructionSet())({data, width, pitch, height});
}

CSimpleGaussBlurEffect::CSimpleGaussBlurEffect() : CSettingsEffect(effectNameSimpleGaussBlur, blurProperties) {}

void CSimpleGaussBlurEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    RunPasses<BlurKernel>(m_settings.passes, Instructions(), *frame);
}

CSimpleLaplacianSharpenEffect::CSimpleLaplacianSharpenEffect()
    : CSettingsEffect(effectNameSimpleLaplacianSharpen, sharpenProperties) {}

void CSimpleLaplacianSharpenEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    RunPasses<SharpenKernel>(m_settings.passes, Instructions(), *frame);
}

}  // namespace AVBased
