#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "host/base/child_program.h"
#include "host/studio/job_words.h"

namespace Nifikral {

/// Runs of the command that pages have asked for, in programs of their own: two at once, the others wait. Threads: any.
class JobQueue {
 public:
    /// `folder` is borrowed: what a run needs beside it is written there.
    explicit JobQueue(const StudioFolder& folder);
    /// Ends what runs, and waits for that: no half output is left.
    ~JobQueue();
    JobQueue(const JobQueue&) = delete;
    JobQueue& operator=(const JobQueue&) = delete;

    /// The job's name. Throws WebError when too many wait.
    std::string Add(JobWords words);
    /// Ends a job, or forgets one that has ended. Throws WebError for a name that is none.
    void Remove(const std::string& id);
    /// All of them, the oldest first: {"jobs": [...]}.
    Json List();
    /// Waits until something has changed since the version, for a time at most. Returns the version now.
    long long WaitForChange(long long version, std::chrono::milliseconds time);

 private:
    enum class State { Waiting, Running, Done, Failed, Cancelled };
    struct Job {
        int id = 0;
        JobWords words;
        State state = State::Waiting;
        std::unique_ptr<ChildProgram> child;
        std::optional<double> share, secondsLeft;
        std::string message;
        bool cancelled = false;
    };

    void Work();
    bool Start(Job& job);
    void Take(Job& job, const std::string& line);
    void End(Job& job);
    void Change();

    const StudioFolder& m_folder;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<std::unique_ptr<Job>> m_jobs;
    long long m_version = 1;
    int m_lastId = 0;
    bool m_ends = false;
    std::thread m_worker;
};

}  // namespace Nifikral
