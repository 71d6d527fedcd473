#include "host/media/standard_input.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>

#include "host/base/interruption.h"

namespace Nifikral {
namespace {

int Read(void*, std::uint8_t* buffer, int size) {
    constexpr int pauseMilliseconds = 100;
    pollfd wanted = {STDIN_FILENO, POLLIN, 0};
    while (!IsInterrupted()) {
        const int ready = poll(&wanted, 1, pauseMilliseconds);
        if (ready == 0 || (ready < 0 && errno == EINTR)) continue;
        const ssize_t count = read(STDIN_FILENO, buffer, std::size_t(size));
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return AVERROR(errno);
        return count == 0 ? AVERROR_EOF : int(count);
    }
    return AVERROR_EXIT;
}

}  // namespace

void FreeStandardInput::operator()(AVIOContext* input) const {
    av_freep(&input->buffer);
    avio_context_free(&input);
}

StandardInputPtr OpenStandardInput() {
    constexpr int bufferBytes = 1 << 16;
    auto* const buffer = static_cast<unsigned char*>(av_malloc(bufferBytes));
    AVIOContext* const input =
        buffer ? avio_alloc_context(buffer, bufferBytes, 0, nullptr, Read, nullptr, nullptr) : nullptr;
    if (!input) av_free(buffer);
    return Require<StandardInputPtr>(input);
}

}  // namespace Nifikral
