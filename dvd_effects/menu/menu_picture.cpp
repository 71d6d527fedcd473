#include "dvd_effects/menu/menu_picture.h"

#include <utility>

#include "dvd_effects/canvas/painting.h"

namespace AVBased {

MenuPicture::MenuPicture(const FrameKind& kind)
    : kind(kind.Layers()), maker(kind.Layers()), maskMaker({true, kind.size.height}), set(kind.set) {}

void MenuPicture::MakeMask(IRawVideoFrame& frame, FrameSize size) {
    maskMaker.Make(frame, size, mask, set);
    BrightnessToCoverage(mask);
}

void MenuPicture::Make(IRawVideoFrame& frame, FrameSize size, point_t inMask) {
    if (spare.Size() == size) std::swap(layer, spare);
    maker.Make(frame, size, layer, set);
    if (mask) MultiplyCoverage(layer, mask, inMask.x, inMask.y);
}

void MenuPicture::CropTo(FrameSize box) {
    if (layer.Size() != box)
        layer = Cropped(layer, (layer.Width() - box.width) / 2, (layer.Height() - box.height) / 4, box);
}

void MenuPicture::SetOnStage(FrameSize box) {
    constexpr unsigned patches = 9;
    const Layer colours = Coarse(layer, patches);
    MixIn(colours, kind, {0, 0, 0}, 110);
    if (spare.Size() != box) spare = Layer(box.width, box.height);
    SpreadOver(spare, colours, set);
    LayOver(spare, layer, (box.width - layer.Width()) / 2, (box.height - layer.Height()) / 2);
    std::swap(layer, spare);
}

}  // namespace AVBased
