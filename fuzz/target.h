#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "fuzz/temporary_folder.h"
#include "host/base/errors.h"
#include "host/run/effect_request.h"

/// What the targets of the host have in common.
namespace Nifikral::Fuzzing {

/// Lives as long as the program, and is its working folder.
const TemporaryFolder& Folder();

/// The module, with the host's own files and texts behind it.
const EffectModule& Module();

/// Runs the effects over the first, the second and the last of so many pictures. Throws usage and input errors.
void ApplyTo(const std::vector<EffectRequest>& requests, int width, int height, int frames);

/// Prints nothing from now on.
void BeQuiet();

/// Runs `work`, whose input may be refused: in words, which are no more than a person reads.
template <class Work>
void Try(const Work& work) {
    BeQuiet();
    try {
        work();
    } catch (const HostError& error) {
        constexpr std::size_t longest = 1 << 20;
        const std::size_t length = std::string(error.what()).size();
        if (length == 0 || length > longest) __builtin_trap();
    }
}

}  // namespace Nifikral::Fuzzing
