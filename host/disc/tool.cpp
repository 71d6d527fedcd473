#include "host/disc/tool.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <sstream>

#include "host/base/child_program.h"
#include "host/base/errors.h"
#include "host/base/interruption.h"

namespace Nifikral {
namespace {

class Files {
 public:
    Files() { posix_spawn_file_actions_init(&m_actions); }
    ~Files() { posix_spawn_file_actions_destroy(&m_actions); }
    Files(const Files&) = delete;
    Files& operator=(const Files&) = delete;

    void Open(int number, const std::string& path, int flags) {
        posix_spawn_file_actions_addopen(&m_actions, number, path.c_str(), flags, 0666);
    }
    void Set(int number, int from) { posix_spawn_file_actions_adddup2(&m_actions, from, number); }
    const posix_spawn_file_actions_t* Get() const { return &m_actions; }

 private:
    posix_spawn_file_actions_t m_actions;
};

std::string LastLine(const std::string& printed) {
    std::istringstream lines(printed);
    std::string last;
    for (std::string line; std::getline(lines, line);)
        if (line.find_first_not_of(" \t\r") != std::string::npos) last = line;
    return last;
}

// Not every program prints why its last bytes were not written.
bool IsFull(const std::string& folder) {
    constexpr std::uintmax_t nothing = 1 << 20;
    std::error_code error;
    const std::filesystem::space_info space = std::filesystem::space(folder, error);
    return !error && space.available < nothing;
}

// What a program prints until it ends; an interruption ends it.
std::string ReadAll(int pipe, pid_t program, const std::function<void()>& meanwhile) {
    std::string printed;
    std::array<char, 4096> bytes{};
    bool asked = false;
    for (;;) {
        pollfd ready{pipe, POLLIN, 0};
        constexpr int milliseconds = 100;
        if (poll(&ready, 1, milliseconds) > 0) {
            const ssize_t count = read(pipe, bytes.data(), bytes.size());
            if (count == 0 || (count < 0 && errno != EINTR && errno != EAGAIN)) return printed;
            if (count > 0) printed.append(bytes.data(), std::size_t(count));
        }
        if (meanwhile) meanwhile();
        if (IsInterrupted() && !asked) asked = kill(program, SIGTERM) == 0;
    }
}

}  // namespace

std::string RunTool(const Tool& tool) {
    ThrowIfInterrupted();
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0)
        throw HostError(ExitCode::Failed, tool.words[0] + " cannot be run: " + std::strerror(errno));
    Files files;
    files.Open(STDIN_FILENO, tool.input.empty() ? "/dev/null" : tool.input, O_RDONLY);
    if (tool.output.empty())
        files.Set(STDOUT_FILENO, ends[1]);
    else
        files.Open(STDOUT_FILENO, tool.output, O_WRONLY | O_CREAT | O_TRUNC);
    files.Set(STDERR_FILENO, ends[1]);
    std::vector<char*> words;
    for (const std::string& word : tool.words) words.push_back(const_cast<char*>(word.c_str()));
    words.push_back(nullptr);
    pid_t program = 0;
    const int error = posix_spawnp(&program, words[0], files.Get(), nullptr, words.data(), environ);
    close(ends[1]);
    if (error != 0) {
        close(ends[0]);
        if (error == ENOENT)
            throw HostError(ExitCode::Failed,
                            tool.words[0] + " is not installed; install it (Debian package " + tool.package + ")");
        throw HostError(ExitCode::Failed, tool.words[0] + " cannot be run: " + std::strerror(error));
    }
    std::string printed = ReadAll(ends[0], program, tool.meanwhile);
    close(ends[0]);
    int status = 0;
    while (waitpid(program, &status, 0) < 0 && errno == EINTR) continue;
    ThrowIfInterrupted();
    if (const int end = EndOf(status); end != 0) {
        if (printed.find(std::strerror(ENOSPC)) != std::string::npos || IsFull(tool.place))
            throw HostError(ExitCode::Output,
                            tool.words[0] + " finds no space left on the disk; make room or name another place");
        std::string cause = FirstLineWith(printed, {"ERR"});
        if (cause.empty() && end > 0) cause = LastLine(printed);
        if (cause.empty()) cause = DescribeEnd(end);
        throw HostError(ExitCode::Failed, tool.words[0] + " fails: " + cause);
    }
    return printed;
}

std::string FirstLineWith(const std::string& printed, const std::vector<std::string>& words) {
    // Progress ends with a return and no line feed.
    std::string line;
    for (std::size_t begin = 0; begin < printed.size();) {
        const std::size_t end = std::min(printed.find_first_of("\r\n", begin), printed.size());
        line = printed.substr(begin, end - begin);
        for (const std::string& word : words)
            if (line.starts_with(word)) return line;
        begin = end + 1;
    }
    return {};
}

}  // namespace Nifikral
