#pragma once

#include <cstddef>
#include <cstdint>

/// What libFuzzer calls for a next input, in programs that link this unit: it changes members of the JSON that an input
/// ends with, so that what reads it sees more than broken syntax. What stands before the first "{" is changed as any
/// other bytes, and so is everything at times.
extern "C" {
std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t largest, unsigned seed);
std::size_t LLVMFuzzerCustomCrossOver(const std::uint8_t* first, std::size_t firstSize, const std::uint8_t* second,
                                      std::size_t secondSize, std::uint8_t* made, std::size_t largest, unsigned seed);
/// libFuzzer's own.
std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t largest);
}
