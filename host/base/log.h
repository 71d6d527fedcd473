#pragma once

#include <functional>
#include <string>

/// What the command prints on stderr. Threads: any.
namespace Nifikral {

enum class Verbosity { Quiet, Normal, Verbose };

void SetVerbosity(Verbosity verbosity);
Verbosity GetVerbosity();

/// One error a line.
void PrintError(const std::string& lines);
/// Something was done otherwise than asked for; not printed under -q.
void PrintWarning(const std::string& line);
/// The same, but only the first time for each `subject`. A warning is a subject of its own: one that a stage repeats
/// is not printed again.
void PrintWarningOnce(const std::string& subject, const std::string& line);
/// Passes the calling thread's warnings to a function instead, until this object goes.
class WarningsTo {
 public:
    explicit WarningsTo(std::function<void(const std::string&)> receive);
    ~WarningsTo();
    WarningsTo(const WarningsTo&) = delete;
    WarningsTo& operator=(const WarningsTo&) = delete;

 private:
    std::function<void(const std::string&)> m_receive, *m_former;
};
/// What was done; not printed under -q.
void PrintNotice(const std::string& line);
/// Printed under -v only.
void PrintDetail(const std::string& line);

}  // namespace Nifikral
