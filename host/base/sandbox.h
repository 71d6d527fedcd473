#pragma once

#include <filesystem>
#include <vector>

namespace Nifikral {

/// What a program may still reach once it is confined. A folder stands for all below it.
struct Reach {
    std::vector<std::filesystem::path> read;   ///< files and folders to read
    std::vector<std::filesystem::path> write;  ///< files and folders to read and to change
    std::vector<std::filesystem::path> run;    ///< programs and their libraries
    bool listens = false;                      ///< may wait for TCP connections
};

/// Confines this program for good, and those that it starts, to these files and programs, and to no TCP connections
/// where the kernel guards them. What is open already stays so; paths that are not there are left out. It is enforced
/// by the kernel (Landlock), so that code that was taken over cannot lift it. Threads: call it before others begin.
/// Throws HostError where the kernel cannot do it.
void EnterSandbox(const Reach& reach);
/// Whether it was called.
bool IsInSandbox();

}  // namespace Nifikral
