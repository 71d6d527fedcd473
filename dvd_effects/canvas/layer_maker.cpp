#include "dvd_effects/canvas/layer_maker.h"

#include <algorithm>
#include <limits>

#include "dvd_effects/canvas/errors.h"

namespace AVBased {

using namespace TarvoBased;

namespace {

// Lines that the host reads beside an error of these operations.
enum Line : int { lineConvert = 400, lineLayer = 420 };

constexpr unsigned formatPlanarLayer = 60;

bool SameShape(const ImageShape& a, const ImageShape& b) {
    return a.format == b.format && a.width == b.width && a.height == b.height && a.matrix == b.matrix;
}

// Four planes of full samples become four bytes a pixel.
void Interleave(PackedView to, PlanarView from) {
    for (unsigned y = 0; y < to.height; ++y) {
        Rgba32* const row = to.Row(y);
        const std::uint8_t* const luma = from.plane[0].Row(y);
        const std::uint8_t* const first = from.plane[1].Row(y);
        const std::uint8_t* const second = from.plane[2].Row(y);
        const std::uint8_t* const alpha = from.plane[3].Row(y);
        for (unsigned x = 0; x < to.width; ++x)
            StoreWord(row + x,
                      luma[x] | unsigned(first[x]) << 8 | unsigned(second[x]) << 16 | unsigned(alpha[x]) << 24);
    }
}

// The picture as wide or as high as the box, whichever gives the smaller or the larger one.
template <bool smaller, bool roundUp>
FrameSize Fit(FrameSize picture, FrameSize box) {
    if (!picture.width || !picture.height || !box.width || !box.height) return {};
    const std::uint64_t byWidth = std::uint64_t(box.width) * picture.height;
    const std::uint64_t byHeight = std::uint64_t(box.height) * picture.width;
    const auto side = [](std::uint64_t product, unsigned by) {
        const std::uint64_t quotient = (product + (roundUp ? by - 1 : 0)) / by;
        return unsigned(std::clamp<std::uint64_t>(quotient, 1, std::numeric_limits<unsigned>::max()));
    };
    if (smaller ? byWidth <= byHeight : byWidth >= byHeight) return {box.width, side(byWidth, picture.width)};
    return {side(byHeight, picture.height), box.height};
}

}  // namespace

FrameSize FitInto(FrameSize picture, FrameSize box) { return Fit<true, true>(picture, box); }
FrameSize FitWithin(FrameSize picture, FrameSize box) { return Fit<true, false>(picture, box); }
FrameSize FitOver(FrameSize picture, FrameSize box) { return Fit<false, true>(picture, box); }

ImageShape ShapeOf(IRawVideoFrame& frame, ColourMatrix matrix) {
    const FrameSize size = SizeOf(frame);
    return {frame.GetPixelFormat(), size.width, size.height, matrix};
}

ConverterOwner MakeConverter(const ImageShape& from, const ImageShape& to, int line) {
    const ImageConversion conversion{from, to};
    ConverterOwner converter(CreateImageConverterEx(&conversion));
    Require(converter != nullptr, textCreateConverterFailed, line);
    return converter;
}

void InterleaveInto(const Layer& layer, CRawVideoFrame& planar, InstructionSet set) {
    variantsOf<Interleave>.For(set)(layer.View(), ViewPlanar(planar, *FindFormat(formatPlanarLayer)));
}

std::unique_ptr<CRawVideoFrame> PlanarLayerFrame(FrameSize size) {
    return std::make_unique<CRawVideoFrame>(false, formatPlanarLayer, size.width, size.height, true);
}

void PictureConverter::Convert(IRawVideoFrame& from, IRawVideoFrame& to, ColourMatrix matrix) {
    const ImageShape fromShape = ShapeOf(from), toShape = ShapeOf(to, matrix);
    if (!m_converter || !SameShape(fromShape, m_from) || !SameShape(toShape, m_to)) {
        m_converter = MakeConverter(fromShape, toShape, lineConvert);
        m_from = fromShape;
        m_to = toShape;
    }
    Require(m_converter->Convert(&from, &to), textConverterFrameFailed, lineConvert);
}

void LayerMaker::Make(IRawVideoFrame& picture, FrameSize size, Layer& layer, InstructionSet set) {
    const auto usable = [](unsigned side) { return side > 0 && side <= largestSide; };
    Require(usable(size.width) && usable(size.height), textInvalidParamValue, lineLayer);
    if (layer.Size() != size) layer = Layer(size.width, size.height);
    if (m_packed) return m_converter.Convert(picture, *layer.Frame(), m_matrix);
    if (!m_planar || SizeOf(*m_planar) != size) m_planar = PlanarLayerFrame(size);
    m_converter.Convert(picture, *m_planar, m_matrix);
    InterleaveInto(layer, *m_planar, set);
}

}  // namespace AVBased
