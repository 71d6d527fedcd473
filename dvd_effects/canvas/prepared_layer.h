#pragma once

#include "dvd_effects/canvas/layer.h"

namespace AVBased {

/// A layer that a template paints once for every kind and size of frame.
class PreparedLayer {
 public:
    /// The layer that paint() makes for such frames.
    template <class Paint>
    const Layer& For(LayerKind kind, FrameSize size, Paint paint) {
        if (!m_layer || kind != m_kind || size != m_size) {
            m_layer = paint();
            m_kind = kind;
            m_size = size;
        }
        return m_layer;
    }

 private:
    Layer m_layer;
    LayerKind m_kind;
    FrameSize m_size;
};

}  // namespace AVBased
