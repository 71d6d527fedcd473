#pragma once

#include <stdexcept>
#include <string>

namespace Nifikral {

enum class ExitCode { Done = 0, Failed = 1, Usage = 2, Input = 3, Output = 4, Interrupted = 130 };

/// A failure that ends the run: a line that names the thing and the remedy, or a line for each of several faults, the
/// command's exit code, and where the module refused or failed, the module's own code.
class HostError : public std::runtime_error {
 public:
    HostError(ExitCode code, const std::string& line, int moduleCode = 0)
        : std::runtime_error(line), m_code(code), m_moduleCode(moduleCode) {}
    ExitCode Code() const { return m_code; }
    int ModuleCode() const { return m_moduleCode; }

 private:
    ExitCode m_code;
    int m_moduleCode;
};

}  // namespace Nifikral
