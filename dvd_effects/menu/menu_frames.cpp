#include "dvd_effects/menu/menu_frames.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "TarvoBased/res_keeper.h"
#include "dvd_effects/canvas/compositor.h"
#include "dvd_effects/canvas/errors.h"

namespace AVBased {

using namespace TarvoBased;

namespace {

// Lines that the host reads beside an error of these operations.
enum Line : int { lineWorkingFrame = 440, lineTextColour = 460, lineDrawText = 500, lineAddBlack = 540 };

}  // namespace

FrameSize FitText(FrameSize rendered, point_t box) {
    const auto limit = [](unsigned side, std::int32_t most) {
        return most > 0 ? std::min(side, unsigned(most)) : side;
    };
    const FrameSize within{limit(rendered.width, box.x), limit(rendered.height, box.y)};
    return within == rendered ? rendered : FitInto(rendered, within);
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
        const InstructionSet set = BestInstructionSet();
        const FrameSize size = FitText(SizeOf(*text), item.boxSize);
        Layer layer(size.width, size.height);
        if (destination->GetPixelFormat() == formatRgba32) {
            Require(converter->Convert(text, layer.Frame()), textConverterFrameFailed, lineDrawText);
        } else {
            const std::unique_ptr<CRawVideoFrame> planar = PlanarLayerFrame(size);
            Require(converter->Convert(text, planar.get()), textConverterFrameFailed, lineDrawText);
            InterleaveInto(layer, *planar, set);
        }
        const double opacity = std::isnan(alpha) ? 0 : std::clamp(alpha, 0.0, 1.0) * 255;
        Canvas(*destination, set)
            .Lay(layer, item.boxPosition.x, item.boxPosition.y, std::uint8_t(std::lround(opacity)));
        return 1;
    });
}

int AddBlack(IRawVideoFrame* picture, unsigned width, unsigned height, IImageConverter*& converter, int& placedWidth,
             int& placedHeight, CRawVideoFrame* frame, int centred) {
    return AtBoundary(lineAddBlack, dvdEffectsUtilsName, [&] {
        Require(picture && frame, textNullPointer, lineAddBlack);
        const FrameSize own = SizeOf(*picture), placed = FitWithin(own, {width, height});
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
        Canvas canvas(*frame, BestInstructionSet());
        if (placed != FrameSize{width, height}) canvas.Clear();
        canvas.Copy(*scaled, centred ? (width - placed.width) / 2 : 0, centred ? (height - placed.height) / 2 : 0);
        placedWidth = int(placed.width);
        placedHeight = int(placed.height);
        return 1;
    });
}

}  // namespace AVBased
