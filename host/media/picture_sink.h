#pragma once

#include <memory>

#include "host/media/media_sink.h"

namespace Nifikral {

/// One picture, or one for each frame where the path is a pattern for numbers. Nothing is made before the first picture
/// comes.
std::unique_ptr<MediaSink> OpenPictureSink(const OutputOptions& options, const OutputTraits& traits);

}  // namespace Nifikral
