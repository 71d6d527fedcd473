#include "host/media/standard_input.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "host/base/interruption.h"

namespace Nifikral {
namespace {

constexpr int bufferBytes = 1 << 16;

int ReadStdin(std::uint8_t* buffer, int size) {
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

StandardInput::StandardInput() {
    auto* const buffer = static_cast<unsigned char*>(av_malloc(bufferBytes));
    m_context = buffer ? avio_alloc_context(buffer, bufferBytes, 0, this, Read, nullptr, nullptr) : nullptr;
    if (m_context) return;
    av_free(buffer);
    throw std::bad_alloc();
}

StandardInput::~StandardInput() {
    av_freep(&m_context->buffer);
    avio_context_free(&m_context);
}

std::span<const std::uint8_t> StandardInput::Peek(std::size_t size) {
    for (int count = 1; count > 0 && m_head.size() < size;) {
        const std::size_t had = m_head.size();
        m_head.resize(size);
        count = ReadStdin(m_head.data() + had, int(size - had));
        m_head.resize(had + std::size_t(std::max(count, 0)));
    }
    return m_head;
}

std::vector<std::uint8_t> StandardInput::ReadAll(std::size_t most) {
    std::vector<std::uint8_t> all;
    for (int count = 1; count > 0 && all.size() <= most;) {
        const std::size_t had = all.size();
        all.resize(had + bufferBytes);
        count = Read(this, all.data() + had, bufferBytes);
        all.resize(had + std::size_t(std::max(count, 0)));
    }
    return all;
}

int StandardInput::Read(void* self, std::uint8_t* buffer, int size) {
    auto& input = *static_cast<StandardInput*>(self);
    const std::size_t left = std::min(input.m_head.size() - input.m_given, std::size_t(size));
    if (left == 0) return ReadStdin(buffer, size);
    std::memcpy(buffer, input.m_head.data() + input.m_given, left);
    input.m_given += left;
    return int(left);
}

}  // namespace Nifikral
