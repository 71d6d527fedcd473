#pragma once

#include <cstddef>

/// Programs that link this unit have no more than so many bytes for an object: operator new throws, as it does where
/// memory is short. That of the address sanitizer ends the program instead.
namespace Nifikral::Fuzzing {

inline constexpr std::size_t largestObject = std::size_t(64) << 20;

}  // namespace Nifikral::Fuzzing
