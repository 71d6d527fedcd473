#include "host/studio/job_queue.h"

#include <poll.h>
#include <sys/resource.h>

#include <algorithm>

#include "host/base/errors.h"
#include "host/studio/web_message.h"

namespace Nifikral {
namespace {

constexpr std::size_t mostRunning = 2, mostJobs = 200;
constexpr const char* stateNames[] = {"waiting", "running", "done", "failed", "cancelled"};

Json OrNull(const std::optional<double>& number) { return number ? Json(*number) : Json(); }

}  // namespace

JobQueue::JobQueue(const StudioFolder& folder) : m_folder(folder), m_worker([this] { Work(); }) {}

JobQueue::~JobQueue() {
    {
        const std::lock_guard lock(m_mutex);
        m_ends = true;
    }
    m_worker.join();
}

void JobQueue::Change() {
    ++m_version;
    m_changed.notify_all();
}

std::string JobQueue::Add(JobWords words) {
    const std::lock_guard lock(m_mutex);
    const auto isOver = [](const auto& job) { return job->state > State::Running; };
    if (m_jobs.size() >= mostJobs) {
        const auto oldest = std::find_if(m_jobs.begin(), m_jobs.end(), isOver);
        if (oldest == m_jobs.end()) throw WebError(429, "200 jobs wait already; let some of them end first");
        m_jobs.erase(oldest);
    }
    auto job = std::make_unique<Job>();
    job->id = ++m_lastId;
    job->words = std::move(words);
    m_jobs.push_back(std::move(job));
    Change();
    return std::to_string(m_lastId);
}

void JobQueue::Remove(const std::string& id) {
    const std::lock_guard lock(m_mutex);
    const auto found =
        std::find_if(m_jobs.begin(), m_jobs.end(), [&](const auto& job) { return std::to_string(job->id) == id; });
    if (found == m_jobs.end()) throw WebError(404, "there is no job " + id);
    Job& job = **found;
    if (job.state == State::Running) {
        job.cancelled = true;
        job.child->Terminate();
    } else if (job.state == State::Waiting) {
        job.state = State::Cancelled;
    } else {
        m_jobs.erase(found);
    }
    Change();
}

Json JobQueue::List() {
    const std::lock_guard lock(m_mutex);
    Json list = Json::array();
    for (const auto& job : m_jobs)
        list.push_back({{"id", std::to_string(job->id)},
                        {"kind", job->words.kind},
                        {"state", stateNames[int(job->state)]},
                        {"title", job->words.title},
                        {"line", CommandLineOf(job->words)},
                        {"output", job->words.output},
                        {"fraction", OrNull(job->share)},
                        {"secondsLeft", OrNull(job->secondsLeft)},
                        {"message", job->message}});
    return {{"jobs", std::move(list)}};
}

long long JobQueue::WaitForChange(long long version, std::chrono::milliseconds time) {
    std::unique_lock lock(m_mutex);
    m_changed.wait_for(lock, time, [&] { return m_version != version; });
    return m_version;
}

bool JobQueue::Start(Job& job) {
    job.state = State::Running;
    Change();
    try {
        for (const JobFile& file : job.words.files) m_folder.Write(file.path, file.text);
        std::vector<std::string> words = {OwnProgram(), job.words.words.front(), "--progress=json"};
        words.insert(words.end(), job.words.words.begin() + 1, job.words.words.end());
        job.child = std::make_unique<ChildProgram>(std::move(words));
        return true;
    } catch (const std::exception& error) {
        job.state = State::Failed;
        job.message = error.what();
        return false;
    }
}

// A line of progress, or a message.
void JobQueue::Take(Job& job, const std::string& line) {
    if (!line.starts_with("{\"")) {
        constexpr std::string_view before = "nifikral: ";
        constexpr std::size_t longest = 4000;
        job.message +=
            (job.message.empty() ? "" : "\n") + (line.starts_with(before) ? line.substr(before.size()) : line);
        if (job.message.size() > longest) job.message.erase(0, job.message.size() - longest);
        return;
    }
    const Json json = Json::parse(line, nullptr, false);
    if (!json.is_object()) return;
    const auto number = [&](const char* key) -> std::optional<double> {
        return json.contains(key) && json[key].is_number() ? std::optional(json[key].get<double>()) : std::nullopt;
    };
    if (const auto share = number("done"))
        job.share = share;
    else if (const auto frame = number("frame"), frames = number("frames"); frame && frames)
        job.share = std::min(1.0, *frame / std::max(1.0, *frames));
    job.secondsLeft = number("secondsLeft");
}

void JobQueue::End(Job& job) {
    const int code = job.child->Wait();
    job.child.reset();
    job.secondsLeft.reset();
    job.state = code == 0 ? State::Done : job.cancelled ? State::Cancelled : State::Failed;
    if (job.state == State::Done) job.share = 1;
    if (job.state == State::Failed && job.message.empty()) job.message = DescribeEnd(code);
}

// All programs are started and waited for on this thread: they end with it, and leave the processors to what is looked
// at, as it does.
void JobQueue::Work() {
    constexpr int behindPreviews = 5;
    setpriority(PRIO_PROCESS, 0, behindPreviews);
    constexpr int milliseconds = 100;
    for (;;) {
        std::vector<Job*> running;
        std::vector<pollfd> pipes;
        {
            const std::lock_guard lock(m_mutex);
            if (m_ends) {
                for (const auto& job : m_jobs)
                    if (job->child) job->child->Terminate();
                m_jobs.clear();
                return;
            }
            for (const auto& job : m_jobs) {
                if (job->state == State::Waiting && running.size() < mostRunning && !Start(*job)) continue;
                if (job->state != State::Running) continue;
                running.push_back(job.get());
                pipes.push_back({job->child->Pipe(), POLLIN, 0});
            }
        }
        if (running.empty()) {
            std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
            continue;
        }
        if (poll(pipes.data(), nfds_t(pipes.size()), milliseconds) <= 0) continue;
        const std::lock_guard lock(m_mutex);
        for (std::size_t i = 0; i < running.size(); ++i) {
            Job& job = *running[i];
            if (pipes[i].revents == 0) continue;
            if (!job.child->Read([&](const std::string& line) { Take(job, line); })) End(job);
            Change();
        }
    }
}

}  // namespace Nifikral
