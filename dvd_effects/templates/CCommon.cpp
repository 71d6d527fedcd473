#include "dvd_effects/templates/CCommon.h"

namespace AVBased {

void CCommon::DrawScene(Canvas& canvas) {
    for (const ShownSource& shown : ShownSources()) {
        const point_t at = PositionOf(shown.source, FrameNumber()) + shown.inBox;
        canvas.Lay(shown.layer, at.x, at.y, OpacityOf(shown.source, FrameNumber()));
    }
    DrawTexts(canvas);
}

}  // namespace AVBased
