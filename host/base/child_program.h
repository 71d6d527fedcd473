#pragma once

#include <sys/types.h>

#include <functional>
#include <string>
#include <vector>

namespace Nifikral {

/// Another program that this one has started, whose stderr comes through a pipe. It ends with the thread that started
/// it. Threads: one at a time.
class ChildProgram {
 public:
    /// `words`: the program's path and its arguments. Throws an error when nothing more can be started.
    explicit ChildProgram(std::vector<std::string> words);
    /// Asks it to end, and waits for that.
    ~ChildProgram();
    ChildProgram(const ChildProgram&) = delete;
    ChildProgram& operator=(const ChildProgram&) = delete;

    /// Becomes readable when there is something to read, or when it has ended.
    int Pipe() const { return m_pipe; }
    /// Takes in what is there; `take` gets each whole line. False at the end.
    bool Read(const std::function<void(const std::string&)>& take);
    /// Asks it to end, once: asked again, it would end at once and leave what it has begun.
    void Terminate();
    /// Waits for the end, and returns it as EndOf does.
    int Wait();

 private:
    pid_t m_id = -1;
    int m_pipe = -1;
    bool m_asked = false;
    std::string m_rest;
};

/// From the status of a program that was waited for: its exit code, or minus the signal that ended it.
int EndOf(int status);

/// The reason and the remedy for an end other than 0 of which the program has printed nothing, such as "its run crashed
/// ...".
std::string DescribeEnd(int end);

/// The path of the program that runs.
std::string OwnProgram();

}  // namespace Nifikral
