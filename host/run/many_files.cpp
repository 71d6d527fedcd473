#include "host/run/many_files.h"

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <map>
#include <mutex>
#include <set>
#include <thread>

#include "host/base/errors.h"
#include "host/base/interruption.h"
#include "host/base/log.h"
#include "host/base/progress.h"
#include "host/media/part_file.h"
#include "host/run/run.h"

namespace Nifikral {
namespace {

namespace fs = std::filesystem;

constexpr char nameMark[] = "{name}", numberMark[] = "{number}";

struct Job {
    std::string input, output;
};

bool IsFolder(const std::string& output) {
    std::error_code error;
    return output.ends_with('/') || fs::is_directory(output, error);
}

bool IsPattern(const std::string& output) {
    return output.find(nameMark) != std::string::npos || output.find(numberMark) != std::string::npos;
}

void Replace(std::string& text, const std::string& mark, const std::string& value) {
    for (std::size_t at = text.find(mark); at != std::string::npos; at = text.find(mark, at + value.size()))
        text.replace(at, mark.size(), value);
}

// The place among so many, with zeros before it, so that names sort as the inputs did.
std::string PlaceText(std::size_t place, std::size_t count) {
    const std::string text = std::to_string(place);
    return std::string(std::to_string(count).size() - text.size(), '0') + text;
}

std::vector<Job> JobsOf(const std::vector<std::string>& inputs, const std::string& output) {
    if (!IsFolder(output) && !IsPattern(output)) {
        const fs::path path(output);
        const std::string remedy =
            path.has_extension() ? (path.parent_path() / nameMark).string() + path.extension().string() : output + "/";
        throw HostError(ExitCode::Usage, output + " is one output for " + std::to_string(inputs.size()) +
                                             " inputs; give a folder or a pattern, such as " + remedy);
    }
    std::vector<Job> jobs;
    for (const std::string& input : inputs) {
        if (input == "-") throw HostError(ExitCode::Usage, "stdin has no name to call an output by; give -o a file");
        const fs::path name = fs::path(input).filename();
        std::string path = IsFolder(output) ? (fs::path(output) / name).string() : output;
        if (!IsFolder(output)) {
            if (fs::path(output).extension().empty()) path += name.extension().string();
            Replace(path, numberMark, PlaceText(jobs.size() + 1, inputs.size()));
            Replace(path, nameMark, name.stem().string());
        }
        jobs.push_back({input, path});
    }
    return jobs;
}

// One path for a file, by whatever name.
std::string Canonical(const std::string& path) {
    std::error_code error;
    const fs::path canonical = fs::weakly_canonical(path, error);
    return error ? path : canonical.string();
}

void RefuseClashes(const std::vector<Job>& jobs, const RunOptions& options) {
    std::map<std::string, std::string> takers;
    std::set<std::string> inputs;
    for (const Job& job : jobs) inputs.insert(Canonical(job.input));
    std::vector<std::string> existing;
    for (const Job& job : jobs) {
        const std::string output = Canonical(job.output);
        if (inputs.contains(output))
            throw HostError(ExitCode::Usage, job.output + " is an input itself; name another folder or pattern");
        const auto [taker, free] = takers.emplace(output, job.input);
        if (!free)
            throw HostError(ExitCode::Usage, taker->second + " and " + job.input + " would both become " + job.output +
                                                 "; distinguish them by {number} in the output's name");
        std::error_code error;
        if (fs::exists(job.output, error)) existing.push_back(job.output);
    }
    if (existing.empty() || options.output.overwrite || options.skipExisting) return;
    constexpr std::size_t most = 3;
    std::string names;
    for (std::size_t i = 0; i < std::min(existing.size(), most); ++i) names += (i ? ", " : "") + existing[i];
    throw HostError(ExitCode::Output, std::to_string(existing.size()) + " of " + std::to_string(jobs.size()) +
                                          " outputs exist already (" + names + (existing.size() > most ? ", ..." : "") +
                                          "); -y overwrites them, --skip-existing leaves them as they are");
}

// The folders of the outputs. Those that are made here and stay empty go away again.
class Folders {
 public:
    explicit Folders(const std::vector<Job>& jobs) {
        std::set<fs::path> folders;
        for (const Job& job : jobs) folders.insert(fs::path(job.output).parent_path());
        for (const fs::path& folder : folders) {
            std::error_code error;
            if (!folder.empty() && fs::create_directory(folder, error)) m_made.push_back(folder);
            ClearDeadParts((folder / "").string());
        }
    }
    ~Folders() {
        std::error_code error;
        for (const fs::path& folder : m_made) fs::remove(folder, error);
    }
    Folders(const Folders&) = delete;
    Folders& operator=(const Folders&) = delete;

 private:
    std::vector<fs::path> m_made;
};

// Whether a run would leave cores without work.
bool IsSmall(const Job& job, const OutputOptions& output) {
    constexpr std::uintmax_t mostBytes = 4 << 20;
    OutputOptions own = output;
    own.path = job.output;
    if (IsPictureOutput(own) && !IsNumberedOutput(own)) return true;
    std::error_code error;
    const std::uintmax_t size = fs::file_size(job.input, error);
    return !error && size < mostBytes;
}

class Runner {
 public:
    using Make = std::function<void(const std::string&, const RunOptions&)>;

    Runner(std::size_t count, const RunOptions& options, const Make& make)
        : m_options(options), m_make(make), m_count(count), m_progress((long long)count, "file") {}

    void Run(const Job& job, int threads, bool alone) {
        if (IsInterrupted()) return;
        RunOptions own = m_options;
        own.output.path = job.output;
        own.threads = threads;
        own.showsProgress = alone;
        own.progressPrefix = "file " + std::to_string(++m_begun) + " of " + std::to_string(m_count) + ", ";
        const auto failed = [&](ExitCode code, const std::string& line) {
            const std::lock_guard lock(m_mutex);
            m_failures[&job] = {code, line.find(job.input) == std::string::npos ? job.input + ": " + line : line};
        };
        try {
            m_make(job.input, own);
            ++m_done;
        } catch (const HostError& error) {
            if (error.Code() == ExitCode::Interrupted) return;
            failed(error.Code(), error.what());
        } catch (const std::bad_alloc&) {
            failed(ExitCode::Failed, "out of memory; use fewer --threads");
        } catch (const std::exception& error) {
            failed(ExitCode::Failed, error.what());
        }
        const std::lock_guard lock(m_mutex);
        m_progress.Advance();
    }

    // Throws unless all is done.
    void Report() const {
        const std::string done = std::to_string(m_done) + " of " + std::to_string(m_count) + " files done";
        if (IsInterrupted()) throw HostError(ExitCode::Interrupted, "interrupted; " + done + ", these stay");
        if (m_failures.empty()) return m_options.dryRun ? void() : PrintNotice(done);
        ExitCode code = m_failures.begin()->second.first;
        for (const auto& [job, failure] : m_failures) {
            PrintError(failure.second);
            if (failure.first != code) code = ExitCode::Failed;
        }
        throw HostError(code, done + ", " + std::to_string(m_failures.size()) + " failed");
    }

 private:
    const RunOptions& m_options;
    const Make& m_make;
    std::size_t m_count;
    std::mutex m_mutex;
    std::atomic<std::size_t> m_begun = 0, m_done = 0;
    std::map<const Job*, std::pair<ExitCode, std::string>> m_failures;  // in the order of the inputs
    Progress m_progress;
};

}  // namespace

void RunEach(const std::vector<std::string>& inputs, const RunOptions& options,
             const std::function<void(const std::string& input, const RunOptions& run)>& make) {
    if (inputs.size() == 1 &&
        !(options.namesMany && (IsFolder(options.output.path) || IsPattern(options.output.path)))) {
        ClearLeftovers(options);
        return make(inputs.front(), options);
    }
    if (!options.chunk.empty() || options.joinTo || options.reportFrames)
        throw HostError(ExitCode::Usage, "many files are not made in chunks; give each machine some of them");
    const std::vector<Job> jobs = JobsOf(inputs, options.output.path);
    RefuseClashes(jobs, options);
    const Folders folders(jobs);

    std::vector<const Job*> small, large;
    for (const Job& job : jobs) (IsSmall(job, options.output) ? small : large).push_back(&job);
    Runner runner(jobs.size(), options, make);
    // What a trial prints stays in order.
    const int threads = options.ThreadCount();
    const int sideBySide = options.dryRun ? 1 : std::min(int(small.size()), threads);
    {
        std::atomic<std::size_t> next = 0;
        std::vector<std::jthread> workers;
        for (int i = 0; i < sideBySide; ++i)
            workers.emplace_back([&] {
                for (std::size_t n = next++; n < small.size(); n = next++)
                    runner.Run(*small[n], threads / sideBySide, false);
            });
    }
    for (const Job* const job : large) runner.Run(*job, threads, true);
    runner.Report();
}

}  // namespace Nifikral
