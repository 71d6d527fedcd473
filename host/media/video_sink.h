#pragma once

#include <memory>

#include "host/media/media_sink.h"

namespace Nifikral {

/// A film in `format`: one video stream, and the input's sound beside it. With `tryOnly` nothing is made.
std::unique_ptr<MediaSink> OpenVideoSink(const OutputOptions& options, const OutputTraits& traits,
                                         const AVOutputFormat& format, bool tryOnly);

}  // namespace Nifikral
