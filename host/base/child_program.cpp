#include "host/base/child_program.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <utility>

#include "host/base/errors.h"

namespace Nifikral {

ChildProgram::ChildProgram(std::vector<std::string> words) {
    std::vector<char*> arguments;
    for (std::string& word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0)
        throw HostError(ExitCode::Failed, "no pipe can be opened; close other programs");
    const pid_t parent = getpid();
    m_id = fork();
    if (m_id == 0) {
        // Ctrl-C is for this program, which asks the others to end.
        setpgid(0, 0);
        // Nobody would wait for what it makes without this program.
        prctl(PR_SET_PDEATHSIG, SIGTERM);
        if (getppid() != parent) _exit(int(ExitCode::Interrupted));
        dup2(ends[1], STDERR_FILENO);
        execv(arguments[0], arguments.data());
        _exit(127);
    }
    close(ends[1]);
    m_pipe = ends[0];
    if (m_id < 0) {
        close(m_pipe);
        throw HostError(ExitCode::Failed, "no further program can be started; close others");
    }
}

ChildProgram::~ChildProgram() {
    if (m_id > 0) {
        Terminate();
        // Its last words make room for its end.
        while (Read([](const std::string&) {})) {
        }
        Wait();
    }
    close(m_pipe);
}

bool ChildProgram::Read(const std::function<void(const std::string&)>& take) {
    std::array<char, 4096> bytes{};
    const ssize_t count = read(m_pipe, bytes.data(), bytes.size());
    if (count < 0) return errno == EINTR;
    m_rest.append(bytes.data(), std::size_t(count));
    for (std::size_t end = m_rest.find('\n'); end != std::string::npos; end = m_rest.find('\n')) {
        take(m_rest.substr(0, end));
        m_rest.erase(0, end + 1);
    }
    return count > 0;
}

void ChildProgram::Terminate() {
    if (m_id > 0 && !std::exchange(m_asked, true)) kill(m_id, SIGTERM);
}

int ChildProgram::Wait() {
    int status = 0;
    while (waitpid(m_id, &status, 0) < 0 && errno == EINTR) {
    }
    m_id = -1;
    return EndOf(status);
}

int EndOf(int status) { return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status); }

std::string DescribeEnd(int end) {
    // The system takes memory back by this signal.
    if (end == -SIGKILL)
        return "its run was killed, as happens when memory runs out; close other programs and run it again";
    if (end < 0)
        return std::string("its run crashed (") + strsignal(-end) +
               "); run it again, and leave the file out or convert it if that fails too";
    return "its run ended with the code " + std::to_string(end) + "; run it again";
}

std::string OwnProgram() { return std::filesystem::read_symlink("/proc/self/exe").string(); }

}  // namespace Nifikral
