#include "dvd_effects/menu/menu_picture.h"

namespace AVBased {

MenuPicture::MenuPicture(const FrameKind& kind)
    : maker(kind.Layers()), maskMaker({true, kind.size.height}), set(kind.set) {}

void MenuPicture::MakeMask(IRawVideoFrame& frame, FrameSize size) {
    maskMaker.Make(frame, size, mask, set);
    BrightnessToCoverage(mask);
}

void MenuPicture::Make(IRawVideoFrame& frame, FrameSize size, point_t inMask) {
    maker.Make(frame, size, layer, set);
    if (mask) MultiplyCoverage(layer, mask, inMask.x, inMask.y);
}

void MenuPicture::CropTo(FrameSize box) {
    if (layer.Size() != box)
        layer = Cropped(layer, (layer.Width() - box.width) / 2, (layer.Height() - box.height) / 2, box);
}

}  // namespace AVBased
