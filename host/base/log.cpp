#include "host/base/log.h"

extern "C" {
#include <libavutil/log.h>
}

#include <unistd.h>

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <set>
#include <sstream>
#include <utility>

namespace Nifikral {
namespace {

std::atomic<Verbosity> currentVerbosity = Verbosity::Normal;
std::atomic<unsigned> earlyEnds = 0;
std::mutex complaintMutex;
std::string complaint;

void Print(const char* kind, const std::string& line) {
    // One write, so that lines of several threads do not mix; the carriage return wipes a progress line.
    const std::string text = "\r\033[K" + ("nifikral: " + (kind + line)) + "\n";
    static const bool terminal = isatty(STDERR_FILENO);
    std::fputs(terminal ? text.c_str() : text.c_str() + 4, stderr);
}

void Capture(void* object, int level, const char* format, va_list arguments) {
    if (level > AV_LOG_WARNING) return;
    char line[512];
    int prefix = 0;
    av_log_format_line2(object, level, format, arguments, line, sizeof line, &prefix);
    std::string text = line;
    while (!text.empty() && (text.back() == '\n' || text.back() == '.')) text.pop_back();
    if (text.starts_with('['))
        if (const std::size_t end = text.find("] "); end != std::string::npos) text.erase(0, end + 2);
    if (text.empty()) return;
    for (const char* const phrase : {"prematurely", "EOI missing", "truncated", "partial file"})
        if (text.find(phrase) != std::string::npos) ++earlyEnds;
    if (currentVerbosity == Verbosity::Verbose) Print("ffmpeg: ", text);
    if (level > AV_LOG_ERROR) return;
    const std::lock_guard lock(complaintMutex);
    complaint = text;
}

}  // namespace

void SetVerbosity(Verbosity verbosity) { currentVerbosity = verbosity; }
Verbosity GetVerbosity() { return currentVerbosity; }

void PrintError(const std::string& lines) {
    std::istringstream stream(lines);
    for (std::string line; std::getline(stream, line);) Print("error: ", line);
}

void PrintWarning(const std::string& line) {
    if (currentVerbosity != Verbosity::Quiet) Print("warning: ", line);
}

void PrintWarningOnce(const std::string& subject, const std::string& line) {
    static std::mutex mutex;
    static std::set<std::string> told;
    const std::lock_guard lock(mutex);
    if (told.insert(subject).second) PrintWarning(line);
}

void PrintDetail(const std::string& line) {
    if (currentVerbosity == Verbosity::Verbose) Print("", line);
}

void CaptureFfmpegMessages() { av_log_set_callback(Capture); }

std::string TakeFfmpegComplaint() {
    const std::lock_guard lock(complaintMutex);
    return std::exchange(complaint, {});
}

unsigned EarlyEnds() { return earlyEnds; }
ExpectEarlyEnds::~ExpectEarlyEnds() { earlyEnds = m_before; }

}  // namespace Nifikral
