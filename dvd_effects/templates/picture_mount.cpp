#include "dvd_effects/templates/picture_mount.h"

#include <algorithm>

namespace AVBased {

void PictureMounts::Set(Layer& picture, LayerKind kind, const MountStyle& style) {
    const FrameSize size = picture.Size();
    auto mount = std::find_if(m_made.begin(), m_made.end(),
                              [&](const Mount& made) { return made.kind == kind && made.size == size; });
    if (mount == m_made.end()) {
        Layer frame = PlainLayer(kind, size, style.ground), shape = PlainLayer(kind, size, {});
        for (const MountStyle::Rim& rim : style.rims) frame = Framed(frame, kind, rim.width, rim.colour);
        if (style.cut) {
            style.cut(shape);
            style.cut(frame);
        }
        frame = Shaded(frame, kind, style.shadowRadius, style.shadowDrop, style.shadow);
        if (m_made.size() == mostKept) m_made.pop_front();
        m_made.push_back({kind, size, std::move(frame), std::move(shape)});
        mount = m_made.end() - 1;
    }
    const Layer& frame = mount->frame;
    Layer mounted = Cropped(frame, 0, 0, frame.Size());
    if (style.cut) MultiplyCoverage(picture, mount->shape);
    LayOver(mounted, picture, (frame.Width() - size.width) / 2, (frame.Height() - size.height) / 2);
    picture = std::move(mounted);
}

}  // namespace AVBased
