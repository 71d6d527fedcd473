#include "dvd_effects/CCommon.h"

namespace AVBased {

void CCommon::DrawSource(Canvas& canvas, const additionsource_t& source, const Layer& picture, point_t inBox) {
    const point_t at = PositionOf(source) + inBox;
    canvas.Lay(picture, at.x, at.y, OpacityOf(source));
}

}  // namespace AVBased
