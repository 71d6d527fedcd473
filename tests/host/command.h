#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <set>
#include <sstream>
#include <string>
#include <vector>

/// Runs programs in a folder of the test's own.
namespace Nifikral {

struct Outcome {
    int exitCode = -1;
    std::string output, errors;
};

inline std::string ReadFile(const std::filesystem::path& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

class CommandTest : public ::testing::Test {
 protected:
    CommandTest() {
        std::string name = (std::filesystem::temp_directory_path() / "nifikral_test_XXXXXX").string();
        folder = mkdtemp(name.data());
        scratch = folder / "scratch";
        std::filesystem::create_directory(scratch);
    }
    ~CommandTest() override { std::filesystem::remove_all(folder); }

    /// The started program's id; its stdout and stderr go to files in `scratch`. `prepare` runs in the child.
    pid_t Start(
        const std::vector<std::string>& words, int standardInput = -1,
        const std::function<void()>& prepare = [] {}) const {
        std::vector<char*> arguments;
        for (const std::string& word : words) arguments.push_back(const_cast<char*>(word.c_str()));
        arguments.push_back(nullptr);
        const pid_t child = fork();
        if (child != 0) return child;
        if (chdir(folder.c_str()) != 0) _exit(126);
        if (standardInput >= 0) dup2(standardInput, STDIN_FILENO);
        if (!std::freopen((scratch / "output").c_str(), "wb", stdout)) _exit(126);
        if (!std::freopen((scratch / "errors").c_str(), "wb", stderr)) _exit(126);
        prepare();
        execvp(arguments[0], arguments.data());
        _exit(127);
    }

    Outcome Wait(pid_t child) const {
        int status = 0;
        waitpid(child, &status, 0);
        const int exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
        return {exitCode, ReadFile(scratch / "output"), ReadFile(scratch / "errors")};
    }

    /// Runs the command with `arguments`, split at blanks.
    Outcome Nifikral(
        const std::string& arguments, const std::function<void()>& prepare = [] {}) const {
        return Wait(Start(Words(NIFIKRAL_PROGRAM " " + arguments), -1, prepare));
    }

    std::string Ffmpeg(const std::string& arguments) const {
        const Outcome outcome = Wait(Start(Words("ffmpeg -nostdin -v error -y " + arguments)));
        EXPECT_EQ(outcome.exitCode, 0) << arguments << "\n" << outcome.errors;
        return outcome.output;
    }

    /// One line of what ffprobe prints about the first video stream.
    std::string Probe(const std::string& file, const std::string& entries) const {
        return Wait(Start(Words("ffprobe -v error -select_streams v:0 -of compact=nk=1:p=0 -show_entries " + entries +
                                " " + file)))
            .output;
    }

    /// The pictures of a video as planes without padding, one after the other.
    std::string RawPictures(const std::string& file, const std::string& pixelFormat) const {
        return Ffmpeg("-i " + file + " -map 0:v -vsync passthrough -f rawvideo -pix_fmt " + pixelFormat + " -");
    }

    std::set<std::string> Files() const {
        std::set<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder))
            if (entry.path() != scratch) names.insert(entry.path().filename().string());
        return names;
    }

    static std::vector<std::string> Words(const std::string& line) {
        std::istringstream stream(line);
        return {std::istream_iterator<std::string>(stream), {}};
    }

    std::filesystem::path folder, scratch;
};

}  // namespace Nifikral
