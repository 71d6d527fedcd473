#include "host/base/progress.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iomanip>
#include <sstream>

#include "host/base/log.h"

namespace Nifikral {
namespace {

ProgressForm currentForm = ProgressForm::Line;

bool IsDrawn() {
    return currentForm == ProgressForm::Line && isatty(STDERR_FILENO) && GetVerbosity() != Verbosity::Quiet;
}

}  // namespace

void SetProgressForm(ProgressForm form) { currentForm = form; }

Progress::Progress(long long total, const char* what, std::string prefix, bool shown)
    : m_shown(shown), m_drawn(shown && IsDrawn()), m_what(what), m_prefix(std::move(prefix)), m_total(total) {}

Progress::~Progress() {
    if (m_drawn) std::fputs("\r\033[K", stderr);
}

void Progress::Advance() {
    ++m_done;
    const Clock::time_point now = Clock::now();
    const double seconds = std::chrono::duration<double>(now - m_begin).count();
    const double rate = double(m_done) / std::max(seconds, 1e-6);
    if (currentForm == ProgressForm::Json && m_shown) {
        PrintJson(rate);
    } else if (m_drawn && now - m_lastDrawn >= std::chrono::milliseconds(200)) {
        m_lastDrawn = now;
        Draw(rate);
    }
}

void Progress::Draw(double rate) const {
    if (m_total >= m_done) {
        const long long left = std::llround(double(m_total - m_done) / rate);
        std::fprintf(stderr, "\r\033[K%s%s %lld of %lld, %.1f a second, %lld:%02lld left", m_prefix.c_str(), m_what,
                     m_done, m_total, rate, left / 60, left % 60);
    } else {
        std::fprintf(stderr, "\r\033[K%s%s %lld, %.1f a second", m_prefix.c_str(), m_what, m_done, rate);
    }
    std::fflush(stderr);
}

void Progress::PrintJson(double rate) const {
    const bool known = m_total >= m_done;
    std::ostringstream line;
    line << std::fixed << std::setprecision(2) << "{\"" << m_what << "\":" << m_done << ",\"" << m_what << "s\":";
    line << (known ? std::to_string(m_total) : "null") << ",\"fps\":" << rate << ",\"secondsLeft\":";
    if (known)
        line << double(m_total - m_done) / rate << "}\n";
    else
        line << "null}\n";
    // In one piece, so that warnings of other threads do not get in between.
    std::fputs(line.str().c_str(), stderr);
}

ShareProgress::ShareProgress() : m_drawn(IsDrawn()) {}

ShareProgress::~ShareProgress() {
    if (m_drawn) std::fputs("\r\033[K", stderr);
}

void ShareProgress::Show(double share) {
    if (share <= m_share) return;
    m_share = std::min(share, 1.0);
    const double seconds = std::chrono::duration<double>(Clock::now() - m_begin).count();
    const double left = seconds * (1 - m_share) / m_share;
    if (m_drawn) {
        const long long whole = std::llround(left);
        std::fprintf(stderr, "\r\033[K%.1f %%, %lld:%02lld:%02lld left", m_share * 100, whole / 3600, whole / 60 % 60,
                     whole % 60);
        std::fflush(stderr);
    } else if (currentForm == ProgressForm::Json) {
        std::ostringstream line;
        line << std::fixed << "{\"done\":" << std::setprecision(4) << m_share
             << ",\"secondsLeft\":" << std::setprecision(2) << left << "}\n";
        std::fputs(line.str().c_str(), stderr);
    }
}

}  // namespace Nifikral
