#pragma once

#include <memory>

#include "host/media/ffmpeg_handles.h"

namespace Nifikral {

struct FreeStandardInput {
    void operator()(AVIOContext* input) const;
};
using StandardInputPtr = std::unique_ptr<AVIOContext, FreeStandardInput>;

/// Stdin for FFmpeg. Unlike its own pipe, waiting for more ends when the run is interrupted, whichever thread waits.
StandardInputPtr OpenStandardInput();

}  // namespace Nifikral
