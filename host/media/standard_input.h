#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "host/media/ffmpeg_handles.h"

namespace Nifikral {

/// Stdin for FFmpeg. Unlike its own pipe, waiting for more ends when the run is interrupted, whichever thread waits.
class StandardInput {
 public:
    StandardInput();
    ~StandardInput();
    StandardInput(const StandardInput&) = delete;
    StandardInput& operator=(const StandardInput&) = delete;

    /// What comes first, less than `size` where there is no more. It stays to be read.
    std::span<const std::uint8_t> Peek(std::size_t size);
    /// Everything that is left; where that is more than `most` bytes, somewhat more than these.
    std::vector<std::uint8_t> ReadAll(std::size_t most);
    /// Reads on from here.
    AVIOContext* Context() { return m_context; }

 private:
    static int Read(void* self, std::uint8_t* buffer, int size);

    std::vector<std::uint8_t> m_head;
    std::size_t m_given = 0;  // of the head
    AVIOContext* m_context;
};

}  // namespace Nifikral
