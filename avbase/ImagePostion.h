#pragma once

#include <cstdint>

namespace AVBased {

/// The host's placement record of a frame call: where the frame stands in the host's composition, in pixels from its
/// top-left corner. The module only checks that a record is given and never reads its fields.
struct ImagePostion {
    std::int32_t left = 0, top = 0;
    std::uint32_t width = 0, height = 0;
};

}  // namespace AVBased
