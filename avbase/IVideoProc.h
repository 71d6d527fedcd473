#pragma once

#include "avbase/IAVProc.h"
#include "avbase/IRawVideoFrame.h"
#include "avbase/ImagePostion.h"

namespace AVBased {

class IAVManager;

/// The position that means "none given": a time-varying effect then reads the frame's own time stamp.
inline constexpr int noPosition = -2147483647 - 1;

/// A video effect. `position` is the frame's place within the effect, in the unit of the property "duration" (the host
/// chooses the unit), or noPosition. Threads and errors as in IAVProc.
class IVideoProc : public IAVProc {
 public:
    /// Moves a generator's playback to `position`; the frame effects have none and return true.
    virtual bool Seek(unsigned position) = 0;
    /// The value of the property "duration".
    virtual int GetDuration() = 0;
    /// Processes a copy. The result belongs to the effect and is valid until the next ProcFrame of this object or its
    /// end; the caller must not Free it. Null on failure: 10021003 for a null record or frame, or the frame's own error
    /// when it cannot be cloned.
    virtual IRawVideoFrame* ProcFrame(ImagePostion* record, int position, IRawVideoFrame* frame) = 0;
    /// Processes the frame itself; its size and format never change, and a format that the effect does not know leaves
    /// every byte as it was. Errors as in ProcFrame, seen only in the exception object.
    virtual void ProcFrameInPlace(ImagePostion* record, int position, IRawVideoFrame* frame) = 0;
    /// Blends two frames; no effect of this module does.
    virtual void BlendFrame(const ImagePostion* record, int position, IRawVideoFrame* frame, IRawVideoFrame* other) = 0;

 protected:
    ~IVideoProc() = default;
};

/// The module's one exported function, under this name with C linkage. A new object for a name of the effect table,
/// compared byte for byte; the caller releases it with Free(). `manager` is borrowed for the object's life by the
/// generators and ignored by the frame effects. Threads: any.
/// Errors (null): 10021003 for a null name; 10021005 for an unknown one; what a constructor raised.
using CreateVideoProcFunction = IVideoProc* (*)(IAVManager* manager, const char* name);
inline constexpr char createVideoProcSymbol[] = "CreateVideoProc";

}  // namespace AVBased
