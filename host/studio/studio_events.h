#pragma once

#include <map>
#include <mutex>
#include <set>
#include <string>

#include "host/studio/job_queue.h"
#include "host/studio/web_message.h"

namespace Nifikral {

/// What a studio reports to its pages by itself: how jobs come on, and folders that have changed. Threads: any.
class StudioEvents {
 public:
    explicit StudioEvents(JobQueue& jobs) : m_jobs(jobs) {}

    /// A folder that a page shows.
    void Watch(const std::string& path);
    /// Server-sent events, without an end.
    WebReply Stream();

 private:
    std::set<std::string> Watched();

    JobQueue& m_jobs;
    std::mutex m_mutex;
    std::set<std::string> m_folders;
};

}  // namespace Nifikral
