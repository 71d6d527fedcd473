#pragma once

#include <array>
#include <cstdint>

namespace AVBased {

/// The weights of a 3x3 block in 256ths, row by row.
using ReliefKernel = std::array<std::int32_t, 9>;

}  // namespace AVBased
