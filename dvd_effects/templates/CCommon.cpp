#include "dvd_effects/templates/CCommon.h"

namespace AVBased {

void CCommon::DrawScene(Canvas& canvas) {
    for (const Shown& shown : ShownSources()) {
        const point_t at = PositionOf(shown.source) + shown.inBox;
        canvas.Lay(shown.picture, at.x, at.y, OpacityOf(shown.source));
    }
    DrawTexts(canvas);
}

}  // namespace AVBased
