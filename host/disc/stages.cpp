#include "host/disc/stages.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <sstream>

#include "host/base/child_program.h"
#include "host/base/errors.h"
#include "host/base/interruption.h"
#include "host/base/log.h"
#include "host/media/part_file.h"
#include "host/run/run_options.h"

namespace Nifikral {
namespace {

namespace fs = std::filesystem;

std::string KeyPath(const Stage& stage) { return stage.result + ".key"; }

std::string ReadText(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// A stage's run.
class Child {
 public:
    Child(const Stage& stage, const std::string& program) : m_stage(stage), m_program(WordsOf(stage, program)) {}

    int Pipe() const { return m_program.Pipe(); }
    const Stage& Of() const { return m_stage; }
    double Share() const { return m_share; }
    /// Takes in what was printed; false at its end.
    bool Read() {
        return m_program.Read([this](const std::string& line) { Take(line); });
    }
    int Wait() { return m_program.Wait(); }
    const std::string& LastError() const { return m_lastError; }

 private:
    static std::vector<std::string> WordsOf(const Stage& stage, const std::string& program);
    void Take(const std::string& line);

    const Stage& m_stage;
    ChildProgram m_program;
    std::string m_lastError;
    double m_share = 0;  // done
    long long m_frame = 0;
    int m_passesDone = 0;
};

std::vector<std::string> Child::WordsOf(const Stage& stage, const std::string& program) {
    std::vector<std::string> words = {program};
    words.insert(words.end(), stage.words.begin(), stage.words.end());
    words.insert(words.end(), {"--progress", "json"});
    if (GetVerbosity() == Verbosity::Verbose) words.emplace_back("-v");
    return words;
}

void Child::Take(const std::string& line) {
    if (line.starts_with("{\"")) {
        const nlohmann::json json = nlohmann::json::parse(line, nullptr, false);
        if (!json.is_object() || !json.contains("frame") || !json.contains("frames")) return;
        const auto frame = json["frame"].get<long long>();
        if (frame < m_frame && m_passesDone + 1 < m_stage.passes) ++m_passesDone;
        m_frame = frame;
        if (!json["frames"].is_number()) return;
        const double part = double(frame) / std::max(1.0, json["frames"].get<double>());
        m_share = std::max(m_share, (m_passesDone + std::min(1.0, part)) / m_stage.passes);
        return;
    }
    constexpr std::string_view error = "nifikral: error: ", warning = "nifikral: warning: ";
    if (line.starts_with(warning))
        PrintWarningOnce(line.substr(warning.size()), m_stage.name + ": " + line.substr(warning.size()));
    else if (line.starts_with(error))
        m_lastError = line.substr(error.size());
    else
        PrintDetail(m_stage.name + ": " + line);
}

}  // namespace

std::string KeyOfFile(const std::string& path) {
    std::error_code error;
    std::ostringstream key;
    if (fs::is_directory(path, error)) {
        std::vector<std::string> files;
        for (const auto& entry : fs::directory_iterator(path, error))
            if (!entry.is_directory(error)) files.push_back(entry.path().string());
        std::sort(files.begin(), files.end());
        for (const std::string& file : files) key << KeyOfFile(file);
    } else if (!path.empty()) {
        const auto size = fs::file_size(path, error);
        const auto time = fs::last_write_time(path, error).time_since_epoch().count();
        key << path << '\t' << size << '\t' << time << '\n';
    }
    return key.str();
}

bool IsMade(const Stage& stage) {
    std::error_code error;
    return fs::exists(stage.result, error) && fs::exists(KeyPath(stage), error) &&
           ReadText(KeyPath(stage)) == stage.key;
}

void MakeStage(const Stage& stage, const std::function<void()>& make) {
    if (IsMade(stage)) return PrintDetail(stage.name + ": complete already");
    // What other keys have left is not to be taken for the new.
    std::error_code error;
    fs::remove(KeyPath(stage), error);
    fs::remove(stage.result, error);
    make();
    PartFile key(KeyPath(stage), true);
    key.Write(stage.key);
    key.Commit();
}

void MakeStages(const std::vector<Stage>& stages, const std::function<void(double)>& show, const std::string& program) {
    std::vector<const Stage*> left;
    double total = 0, done = 0;
    for (const Stage& stage : stages) {
        if (IsMade(stage))
            PrintDetail(stage.name + ": complete already");
        else
            left.push_back(&stage);
    }
    for (const Stage* const stage : left) total += stage->weight;
    std::stable_sort(left.begin(), left.end(), [](auto* a, auto* b) { return a->weight > b->weight; });
    const std::string own = program.empty() ? OwnProgram() : program;
    // Each has parts that run on one core alone, and memory of its own.
    const std::size_t atOnce = std::size_t(std::clamp((RunOptions().ThreadCount() + 1) / 2, 2, 8));
    std::vector<std::unique_ptr<Child>> children;
    auto next = left.begin();
    while (next != left.end() || !children.empty()) {
        ThrowIfInterrupted();
        for (; next != left.end() && children.size() < atOnce; ++next)
            children.push_back(std::make_unique<Child>(**next, own));
        std::vector<pollfd> waiting;
        for (const auto& child : children) waiting.push_back({child->Pipe(), POLLIN, 0});
        constexpr int milliseconds = 200;
        poll(waiting.data(), nfds_t(waiting.size()), milliseconds);
        double now = done;
        for (std::size_t i = waiting.size(); i-- > 0;) {
            Child& child = *children[i];
            if (waiting[i].revents == 0 || child.Read()) {
                now += child.Share() * child.Of().weight;
                continue;
            }
            const int code = child.Wait();
            ThrowIfInterrupted();
            if (code != 0) {
                const std::string& error = child.LastError();
                throw HostError(code < 0 ? ExitCode::Failed : ExitCode(code),
                                child.Of().name + ": " + (error.empty() || code < 0 ? DescribeEnd(code) : error));
            }
            if (!IsMade(child.Of()))
                throw HostError(
                    ExitCode::Failed,
                    child.Of().name + ": what it is made from has changed meanwhile; run the command again");
            done += child.Of().weight;
            now += child.Of().weight;
            children.erase(children.begin() + std::ptrdiff_t(i));
        }
        if (total > 0) show(now / total);
    }
}

WorkLock::WorkLock(const std::string& folder) : m_folder(folder) {
    std::error_code error;
    m_isNew = fs::create_directories(folder, error);
    m_file = open((folder + "/lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
    if (m_file < 0) throw HostError(ExitCode::Output, folder + " cannot be written; name another place");
    if (flock(m_file, LOCK_EX | LOCK_NB) != 0) {
        close(m_file);
        throw HostError(ExitCode::Output, folder + " is in use by another run; wait until it has ended");
    }
    ClearDeadParts(folder + "/");
}

WorkLock::~WorkLock() {
    std::error_code error;
    if (m_isNew) fs::remove_all(m_folder, error);
    close(m_file);
}

}  // namespace Nifikral
