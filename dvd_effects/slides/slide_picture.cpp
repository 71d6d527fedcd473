#include "dvd_effects/slides/slide_picture.h"

#include <algorithm>
#include <vector>

#include "dvd_effects/canvas/compositor.h"
#include "dvd_effects/canvas/errors.h"
#include "dvd_effects/canvas/layer_maker.h"
#include "dvd_effects/canvas/painting.h"
#include "dvd_effects/slides/rasters.h"

namespace AVBased {

namespace {

constexpr int lineSize = 40;

bool IsPacked(IRawVideoFrame& frame) { return frame.GetPixelFormat() == formatRgba32; }

// The largest part in the middle that has the shape of `shape`, as a packed picture.
std::unique_ptr<CRawVideoFrame> MiddleOf(IRawVideoFrame& picture, FrameSize shape) {
    const FrameSize own = SizeOf(picture), part = FitInto(shape, own);
    auto middle = std::make_unique<CRawVideoFrame>(false, formatRgba32, part.width, part.height, true);
    std::unique_ptr<CRawVideoFrame> packed;
    if (!IsPacked(picture)) {
        packed = std::make_unique<CRawVideoFrame>(false, formatRgba32, own.width, own.height, true);
        PictureConverter().Convert(picture, *packed, ColourMatrix::Automatic);
    }
    const PackedView from = ViewPacked(packed ? *packed : picture), to = ViewPacked(*middle);
    const unsigned left = (own.width - part.width) / 2, top = (own.height - part.height) / 2;
    for (unsigned y = 0; y < to.height && top + y < from.height; ++y)
        std::copy_n(from.Row(top + y) + left, std::min(to.width, from.width - std::min(left, from.width)), to.Row(y));
    return middle;
}

// Lays the picture, at the given size, on the middle of a frame.
void LayInMiddle(IRawVideoFrame& picture, FrameSize size, unsigned frameRows, CRawVideoFrame& frame,
                 InstructionSet set) {
    Layer layer;
    LayerMaker(LayerKind{IsPacked(frame), frameRows}).Make(picture, size, layer, set);
    const FrameSize whole = SizeOf(frame);
    Canvas(frame, set)
        .Lay(layer, std::int32_t(whole.width - size.width) / 2, std::int32_t(whole.height - size.height) / 2);
}

// (1 2 1) / 4 along `count` pixels that lie `step` apart; the ends count twice.
void SoftenLine(Rgba32* pixels, unsigned count, std::size_t step) {
    Rgba32 before = pixels[0];
    for (unsigned i = 0; i < count; ++i) {
        Rgba32& pixel = pixels[i * step];
        const Rgba32 own = pixel, behind = pixels[std::min(i + 1, count - 1) * step];
        const auto mean = [](unsigned a, unsigned b, unsigned c) { return std::uint8_t((a + 2 * b + c + 2) / 4); };
        pixel = {mean(before.blue, own.blue, behind.blue), mean(before.green, own.green, behind.green),
                 mean(before.red, own.red, behind.red), own.alpha};
        before = own;
    }
}

void Soften(const PackedView& view) {
    constexpr int times = 6;
    for (int i = 0; i < times; ++i) {
        for (unsigned y = 0; y < view.height; ++y) SoftenLine(view.Row(y), view.width, 1);
        for (unsigned x = 0; x < view.width; ++x) SoftenLine(view.Row(0) + x, view.height, view.pitch / sizeof(Rgba32));
    }
}

// Covers the slide with a copy of the picture that is blurred in small and enlarged then.
void LayBlurred(IRawVideoFrame& picture, unsigned frameRows, CRawVideoFrame& slide, InstructionSet set) {
    constexpr unsigned reduction = 24;
    constexpr unsigned darkness = 110;
    const FrameSize size = SizeOf(slide);
    const FrameSize small{std::max(size.width / reduction, 1u), std::max(size.height / reduction, 1u)};
    const Layer blurred(small.width, small.height);
    FillBlack(*blurred.Frame());
    LayInMiddle(*MiddleOf(picture, size), small, frameRows, *blurred.Frame(), set);
    MixIn(blurred, LayerKind{}, Colour{0, 0, 0}, darkness);
    Soften(blurred.View());
    LayInMiddle(*blurred.Frame(), size, frameRows, slide, set);
}

}  // namespace

void FitPicture(IRawVideoFrame& picture, SlideFit fit, unsigned frameRows, CRawVideoFrame& slide, InstructionSet set) {
    const FrameSize own = SizeOf(picture), whole = SizeOf(slide), fitted = FitInto(own, whole);
    Require(own.width && own.height, TarvoBased::textInvalidParamValue, lineSize, "slide_picture");
    if (fitted == whole || fit == SlideFit::Pad) return LayInMiddle(picture, fitted, frameRows, slide, set);
    if (fit == SlideFit::Crop) return LayInMiddle(*MiddleOf(picture, whole), whole, frameRows, slide, set);
    LayBlurred(picture, frameRows, slide, set);
    LayInMiddle(picture, fitted, frameRows, slide, set);
}

}  // namespace AVBased
