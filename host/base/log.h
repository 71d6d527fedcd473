#pragma once

#include <string>

/// What the command tells on stderr. Threads: any.
namespace Nifikral {

enum class Verbosity { Quiet, Normal, Verbose };

void SetVerbosity(Verbosity verbosity);
Verbosity GetVerbosity();

/// One error a line.
void PrintError(const std::string& lines);
/// Something was done otherwise than asked for; not told under -q.
void PrintWarning(const std::string& line);
/// The same, but only the first time for each `subject`.
void PrintWarningOnce(const std::string& subject, const std::string& line);
/// Told under -v only.
void PrintDetail(const std::string& line);

/// Keeps FFmpeg's own messages off the terminal (except under -v); its last complaint is kept as a reason to quote.
void CaptureFfmpegMessages();
/// FFmpeg's last complaint since the previous call, "" without one.
std::string TakeFfmpegComplaint();
/// How often FFmpeg has said since the start that an input ends before its end.
unsigned EarlyEnds();
/// While it lives, early ends are no news: one looks whether a file is complete.
class ExpectEarlyEnds {
 public:
    ExpectEarlyEnds() = default;
    ~ExpectEarlyEnds();
    ExpectEarlyEnds(const ExpectEarlyEnds&) = delete;
    ExpectEarlyEnds& operator=(const ExpectEarlyEnds&) = delete;

 private:
    unsigned m_before = EarlyEnds();
};

}  // namespace Nifikral
