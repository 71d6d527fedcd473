#pragma once

#include <stdexcept>
#include <string>

namespace Nifikral {

enum class ExitCode { Done = 0, Failed = 1, Usage = 2, Input = 3, Output = 4, Interrupted = 130 };

/// A failure that ends the run: a line that names the thing and the remedy, or a line for each of several faults, and
/// the command's exit code.
class HostError : public std::runtime_error {
 public:
    HostError(ExitCode code, const std::string& line) : std::runtime_error(line), m_code(code) {}
    ExitCode Code() const { return m_code; }

 private:
    ExitCode m_code;
};

}  // namespace Nifikral
