#include "host/base/log.h"

#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <mutex>
#include <set>
#include <sstream>
#include <utility>

namespace Nifikral {
namespace {

std::atomic<Verbosity> currentVerbosity = Verbosity::Normal;
thread_local std::function<void(const std::string&)>* warningReceiver = nullptr;

bool IsNew(const std::string& subject) {
    static std::mutex mutex;
    static std::set<std::string> reported;
    const std::lock_guard lock(mutex);
    return reported.insert(subject).second;
}

void Print(const char* kind, const std::string& line) {
    // One write, so that lines of several threads do not mix; the carriage return wipes a progress line.
    const std::string text = "\r\033[K" + ("nifikral: " + (kind + line)) + "\n";
    static const bool terminal = isatty(STDERR_FILENO);
    std::fputs(terminal ? text.c_str() : text.c_str() + 4, stderr);
}

}  // namespace

void SetVerbosity(Verbosity verbosity) { currentVerbosity = verbosity; }
Verbosity GetVerbosity() { return currentVerbosity; }

void PrintError(const std::string& lines) {
    std::istringstream stream(lines);
    for (std::string line; std::getline(stream, line);) Print("error: ", line);
}

WarningsTo::WarningsTo(std::function<void(const std::string&)> receive)
    : m_receive(std::move(receive)), m_former(std::exchange(warningReceiver, &m_receive)) {}
WarningsTo::~WarningsTo() { warningReceiver = m_former; }

void PrintWarning(const std::string& line) {
    if (warningReceiver) return (*warningReceiver)(line);
    IsNew(line);
    if (currentVerbosity != Verbosity::Quiet) Print("warning: ", line);
}

void PrintWarningOnce(const std::string& subject, const std::string& line) {
    if (IsNew(subject)) PrintWarning(line);
}

void PrintNotice(const std::string& line) {
    if (currentVerbosity != Verbosity::Quiet) Print("", line);
}

void PrintDetail(const std::string& line) {
    if (currentVerbosity == Verbosity::Verbose) Print("", line);
}

}  // namespace Nifikral
