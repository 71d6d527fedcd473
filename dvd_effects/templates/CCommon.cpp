#include "dvd_effects/templates/CCommon.h"

namespace AVBased {

void CCommon::DrawScene(Canvas& canvas) {
    for (const ShownSource& shown : ShownSources()) {
        const point_t at = PositionOf(shown.source, FrameNumber()) + shown.inBox;
        const std::uint8_t opacity = OpacityOf(shown.source, FrameNumber());
        canvas.Lay(shown.layer, at.x, at.y, opacity);
        if (const MenuText* const caption = CaptionOf(shown.number)) {
            const auto free = std::int32_t(shown.layer.Width()) - std::int32_t(caption->layer.Width());
            canvas.Lay(caption->layer, at.x + free / 2, at.y + std::int32_t(shown.layer.Height()), opacity);
        }
    }
    DrawTexts(canvas);
}

}  // namespace AVBased
