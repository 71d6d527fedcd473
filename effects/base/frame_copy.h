#pragma once

#include <memory>

#include "TarvoBased/boundary.h"
#include "TarvoBased/res_keeper.h"
#include "avbase/IRawVideoFrame.h"
#include "effects/base/frame_views.h"

namespace AVBased {

struct FreeFrame {
    void operator()(IRawVideoFrame* frame) const { frame->Free(); }
};
using FrameOwner = std::unique_ptr<IRawVideoFrame, FreeFrame>;

/// The frame's duplicate; null only when the frame gave none and filed no error. Raises the error that it filed.
inline FrameOwner CloneFrame(IRawVideoFrame& frame) {
    FrameOwner clone(frame.Clone());
    if (!clone) TarvoBased::RaisePendingException();
    return clone;
}

/// An untouched copy to read from while the frame is written; freed on every path. Raises 10021007 or the frame's own
/// error when there is none.
class FrameCopy {
 public:
    explicit FrameCopy(IRawVideoFrame& frame) : m_clone(CloneFrame(frame)) {
        if (!m_clone) TarvoBased::RaiseNoMemory(lineNoCopy);
    }

    /// The copy of a view of the frame, at least as large. Raises 10021007 when the host's copy is smaller, or lacks a
    /// plane.
    template <class Sample>
    PlaneView<Sample> Of(const PlaneView<Sample>& original, unsigned plane = 0) const {
        const PlaneView<Sample> copy = ViewPlane<Sample>(*m_clone, plane);
        if (copy.width < original.width || copy.height < original.height) TarvoBased::RaiseNoMemory(lineNoCopy);
        return copy;
    }
    PlanarView Of(const PlanarView& original) const {
        PlanarView copy = original;
        for (unsigned p = 0; p < copy.planes; ++p) copy.plane[p] = Of(original.plane[p], p);
        return copy;
    }

 private:
    static constexpr int lineNoCopy = 160;
    FrameOwner m_clone;
};

}  // namespace AVBased
