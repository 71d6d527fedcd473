#pragma once

#include <memory>

#include "TarvoBased/boundary.h"
#include "TarvoBased/res_keeper.h"
#include "avbase/IRawVideoFrame.h"

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
    IRawVideoFrame& operator*() const { return *m_clone; }

 private:
    static constexpr int lineNoCopy = 160;
    FrameOwner m_clone;
};

}  // namespace AVBased
