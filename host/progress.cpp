#include "host/progress.h"

#include <unistd.h>

#include <cmath>
#include <cstdio>

#include "host/log.h"

namespace Nifikral {

Progress::Progress(long long total, const char* what)
    : m_shown(isatty(STDERR_FILENO) && GetVerbosity() != Verbosity::Quiet), m_what(what), m_total(total) {}

Progress::~Progress() {
    if (m_shown) std::fputs("\r\033[K", stderr);
}

void Progress::Advance() {
    ++m_done;
    const Clock::time_point now = Clock::now();
    if (!m_shown || now - m_drawn < std::chrono::milliseconds(200)) return;
    m_drawn = now;
    const double seconds = std::chrono::duration<double>(now - m_begin).count(), rate = double(m_done) / seconds;
    if (m_total >= m_done) {
        const long long left = std::llround(double(m_total - m_done) / rate);
        std::fprintf(stderr, "\r\033[K%s %lld of %lld, %.1f a second, %lld:%02lld left", m_what, m_done, m_total, rate,
                     left / 60, left % 60);
    } else {
        std::fprintf(stderr, "\r\033[K%s %lld, %.1f a second", m_what, m_done, rate);
    }
    std::fflush(stderr);
}

}  // namespace Nifikral
