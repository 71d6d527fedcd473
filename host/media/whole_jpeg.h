#pragma once

#include <cstdint>
#include <span>

namespace Nifikral {

/// Whether a JPEG file goes on until the mark of its end, which decoders make up where it is missing. What follows the
/// mark does not matter.
bool IsWholeJpeg(std::span<const std::uint8_t> file);

}  // namespace Nifikral
