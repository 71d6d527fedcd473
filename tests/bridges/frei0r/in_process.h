#pragma once

#include <random>
#include <string>
#include <utility>
#include <vector>

#include "bridges/common/borrowed_frame.h"
#include "bridges/common/bridged_effect.h"

/// What the module itself makes of packed pictures, to compare plug-ins and programs with.
namespace Nifikral::Frei0r {

using Bytes = std::vector<unsigned char>;
using Settings = std::vector<std::pair<std::string, std::string>>;

inline Bytes RandomBytes(std::size_t count, unsigned seed = 1) {
    std::mt19937 random(seed);
    Bytes bytes(count);
    for (unsigned char& byte : bytes) byte = static_cast<unsigned char>(random());
    return bytes;
}

/// `pictures` holds one or more of the size, without padding, the first one at `position`.
inline Bytes InProcess(const std::string& effect, const Settings& settings, Bytes pictures, unsigned width,
                       unsigned height, int position = 0) {
    BridgedEffect module(TheBridgeModule().module.value(), effect);
    for (const auto& [name, text] : settings) module.Set(name, text);
    const std::size_t size = std::size_t(width) * height * 4;
    for (std::size_t at = 0; at + size <= pictures.size(); at += size) {
        const BorrowedPlane plane{pictures.data() + at, width * 4, width * 4, height};
        BorrowedFrame frame(30, width, height, {&plane, 1});
        module.Process(frame, position++);
    }
    return pictures;
}

}  // namespace Nifikral::Frei0r
