#include "dvd_effects/menu_frames.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "TarvoBased/res_keeper.h"
#include "dvd_effects/compositor.h"
#include "dvd_effects/menu_errors.h"

namespace AVBased {

using namespace TarvoBased;

namespace {

// Lines that the host reads beside an error of these operations.
enum Line : int {
    lineConvert = 400,
    lineLayer = 420,
    lineWorkingFrame = 440,
    lineTextColour = 460,
    lineDrawText = 500,
    lineAddBlack = 540
};

constexpr unsigned formatPlanarLayer = 60;

ImageShape ShapeOf(IRawVideoFrame& frame, ColourMatrix matrix = ColourMatrix::Automatic) {
    const FrameSize size = SizeOf(frame);
    return {frame.GetPixelFormat(), size.width, size.height, matrix};
}

bool SameShape(const ImageShape& a, const ImageShape& b) {
    return a.format == b.format && a.width == b.width && a.height == b.height && a.matrix == b.matrix;
}

ConverterOwner MakeConverter(const ImageShape& from, const ImageShape& to, int line) {
    const ImageConversion conversion{from, to};
    ConverterOwner converter(CreateImageConverterEx(&conversion));
    Require(converter != nullptr, textCreateConverterFailed, line);
    return converter;
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

void InterleaveInto(const Layer& layer, CRawVideoFrame& planar) {
    variantsOf<Interleave>.For(BestInstructionSet())(layer.View(), ViewPlanar(planar, *FindFormat(formatPlanarLayer)));
}

}  // namespace

FrameSize FitInto(FrameSize picture, FrameSize box) {
    if (!picture.width || !picture.height || !box.width || !box.height) return {};
    const std::uint64_t byWidth = std::uint64_t(box.width) * picture.height;
    const std::uint64_t byHeight = std::uint64_t(box.height) * picture.width;
    const auto roundedUp = [](std::uint64_t product, unsigned by) { return unsigned((product + by - 1) / by); };
    if (byWidth <= byHeight) return {box.width, roundedUp(byWidth, picture.width)};
    return {roundedUp(byHeight, picture.height), box.height};
}

FrameSize FitOver(FrameSize picture, FrameSize box) {
    if (!picture.width || !picture.height || !box.width || !box.height) return {};
    const std::uint64_t byWidth = std::uint64_t(box.width) * picture.height;
    const std::uint64_t byHeight = std::uint64_t(box.height) * picture.width;
    const auto roundedUp = [](std::uint64_t n, unsigned d) {
        return unsigned(std::min<std::uint64_t>((n + d - 1) / d, std::numeric_limits<unsigned>::max()));
    };
    if (byWidth >= byHeight) return {box.width, roundedUp(byWidth, picture.width)};
    return {roundedUp(byHeight, picture.height), box.height};
}

FrameSize FitText(FrameSize rendered, point_t box) {
    const auto limit = [](unsigned side, std::int32_t most) {
        return most > 0 ? std::min(side, unsigned(most)) : side;
    };
    const FrameSize within{limit(rendered.width, box.x), limit(rendered.height, box.y)};
    return within == rendered ? rendered : FitInto(rendered, within);
}

ColourMatrix MatrixOfRows(unsigned rows) {
    constexpr unsigned standardDefinitionRows = 576;
    return rows > standardDefinitionRows ? ColourMatrix::Bt709 : ColourMatrix::Bt601;
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

void LayerMaker::Make(IRawVideoFrame& picture, FrameSize size, Layer& layer) {
    const auto usable = [](unsigned side) { return side > 0 && side <= largestSide; };
    Require(usable(size.width) && usable(size.height), textInvalidParamValue, lineLayer);
    if (FrameSize{layer.Width(), layer.Height()} != size) layer = Layer(size.width, size.height);
    if (m_packed) return m_converter.Convert(picture, *layer.Frame(), m_matrix);
    if (!m_planar || SizeOf(*m_planar) != size)
        m_planar = std::make_unique<CRawVideoFrame>(false, formatPlanarLayer, size.width, size.height, true);
    m_converter.Convert(picture, *m_planar, m_matrix);
    InterleaveInto(layer, *m_planar);
}

int CreateCRawVideoFrame(CRawVideoFrame* frame, int width, int height) {
    return AtBoundary(lineWorkingFrame, dvdEffectsUtilsName, [&] {
        Require(frame, textNullPointer, lineWorkingFrame);
        Require(width >= 0 && height >= 0, textMallocFailed, lineWorkingFrame);
        try {
            frame->SetSize(unsigned(width), unsigned(height));
        } catch (const CBaseException& exception) {
            Require(exception.GetCode() != errorNoMemory, textMallocFailed, lineWorkingFrame);
            throw;
        }
        return 1;
    });
}

int ChangeTextFrame(IRawVideoFrame* frame, unsigned char red, unsigned char green, unsigned char blue) {
    return AtBoundary(lineTextColour, dvdEffectsUtilsName, [&] {
        Require(frame, textNullPointer, lineTextColour);
        const PackedView text = frame->GetPixelFormat() == formatRgba32 ? ViewPacked(*frame) : PackedView{};
        Require(text.data, textNoTextFrameBuffer, lineTextColour);
        const std::size_t size = std::size_t(text.width) * text.height;
        const std::unique_ptr<unsigned char[]> marked(new (std::nothrow) unsigned char[size]);
        Require(marked != nullptr, textMallocFailed, lineTextColour);
        std::fill_n(marked.get(), size, static_cast<unsigned char>(0));
        for (unsigned y = 0; y < text.height; ++y)
            for (unsigned x = 0; x < text.width; ++x) {
                if (text.Row(y)[x].alpha != 255) continue;
                for (unsigned row = y ? y - 1 : 0; row <= std::min(y + 1, text.height - 1); ++row)
                    for (unsigned column = x ? x - 1 : 0; column <= std::min(x + 1, text.width - 1); ++column)
                        marked[std::size_t(row) * text.width + column] = 1;
            }
        for (unsigned y = 0; y < text.height; ++y)
            for (unsigned x = 0; x < text.width; ++x)
                if (marked[std::size_t(y) * text.width + x]) text.Row(y)[x] = {blue, green, red, text.Row(y)[x].alpha};
        return 1;
    });
}

int DrawText(IRawVideoFrame* destination, IRawVideoFrame* text, const text_t& item, double alpha,
             IImageConverter* converter) {
    return AtBoundary(lineDrawText, dvdEffectsUtilsName, [&] {
        Require(destination && text && converter, textNullPointer, lineDrawText);
        if (!Canvas::Takes(*destination)) return 1;
        const FrameSize size = FitText(SizeOf(*text), item.boxSize);
        Layer layer(size.width, size.height);
        if (destination->GetPixelFormat() == formatRgba32) {
            Require(converter->Convert(text, layer.Frame()), textConverterFrameFailed, lineDrawText);
        } else {
            CRawVideoFrame planar(false, formatPlanarLayer, size.width, size.height, true);
            Require(converter->Convert(text, &planar), textConverterFrameFailed, lineDrawText);
            InterleaveInto(layer, planar);
        }
        const double opacity = std::isnan(alpha) ? 0 : std::clamp(alpha, 0.0, 1.0) * 255;
        Canvas(*destination).Lay(layer, item.boxPosition.x, item.boxPosition.y, std::uint8_t(std::lround(opacity)));
        return 1;
    });
}

int AddBlack(IRawVideoFrame* picture, unsigned width, unsigned height, IImageConverter*& converter, int& placedWidth,
             int& placedHeight, CRawVideoFrame* frame, int centred) {
    return AtBoundary(lineAddBlack, dvdEffectsUtilsName, [&] {
        Require(picture && frame, textNullPointer, lineAddBlack);
        const FrameSize own = SizeOf(*picture), placed = FitInto(own, {width, height});
        frame->SetSize(width, height);
        FrameOwner scaled;
        if (placed == own && placed.width && picture->GetPixelFormat() == frame->GetPixelFormat()) {
            scaled.reset(picture->Clone());
            Require(scaled != nullptr, textCloneFrameFailed, lineAddBlack);
        } else {
            scaled.reset(new CRawVideoFrame(false, frame->GetPixelFormat(), placed.width, placed.height, true));
            if (!converter)
                converter =
                    MakeConverter(ShapeOf(*picture), ShapeOf(*scaled, MatrixOfRows(height)), lineAddBlack).release();
            Require(converter->Convert(picture, scaled.get()), textConverterFrameFailed, lineAddBlack);
        }
        Canvas canvas(*frame);
        if (placed != FrameSize{width, height}) canvas.Clear();
        canvas.Copy(*scaled, centred ? (width - placed.width) / 2 : 0, centred ? (height - placed.height) / 2 : 0);
        placedWidth = int(placed.width);
        placedHeight = int(placed.height);
        return 1;
    });
}

}  // namespace AVBased
