#include "host/studio/studio_events.h"

#include <chrono>
#include <thread>

#include "host/studio/folder_listing.h"

namespace Nifikral {
namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

std::string Event(const char* name, const Json& data) {
    return std::string("event: ") + name + "\ndata: " + JsonText(data) + "\n\n";
}

}  // namespace

void StudioEvents::Watch(const std::string& path) {
    const std::lock_guard lock(m_mutex);
    constexpr std::size_t mostFolders = 100;
    if (m_folders.size() >= mostFolders) m_folders.clear();
    m_folders.insert(path);
}

std::set<std::string> StudioEvents::Watched() {
    const std::lock_guard lock(m_mutex);
    return m_folders;
}

WebReply StudioEvents::Stream() {
    struct Seen {
        long long jobs = 0;
        std::map<std::string, std::string> folders;
        Clock::time_point look{}, word = Clock::now();
    };
    WebReply reply{200, "text/event-stream", {}};
    reply.stream = [this, seen = std::make_shared<Seen>()](const WebReply::Send& send) {
        std::string text = seen->jobs == 0 ? "retry: 1000\n\n" : "";
        // Not more than a page can show.
        constexpr std::chrono::milliseconds pause = 200ms, lookEvery = 1s, wordEvery = 10s;
        if (seen->jobs != 0) std::this_thread::sleep_for(pause);
        const long long jobs = m_jobs.WaitForChange(seen->jobs, pause);
        if (jobs != seen->jobs) text += Event("jobs", m_jobs.List());
        seen->jobs = jobs;
        const Clock::time_point now = Clock::now();
        if (now - seen->look >= lookEvery) {
            seen->look = now;
            for (const std::string& folder : Watched()) {
                const std::string state = FolderState(folder.empty() ? "." : folder);
                std::string& known = seen->folders[folder];
                if (!known.empty() && known != state) text += Event("folder", {{"path", folder}});
                known = state;
            }
        }
        if (text.empty() && now - seen->word >= wordEvery) text = ":\n\n";
        if (text.empty()) return true;
        seen->word = now;
        return send(text);
    };
    return reply;
}

}  // namespace Nifikral
