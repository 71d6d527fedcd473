#pragma once

#include <condition_variable>
#include <cstddef>
#include <exception>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "host/media/media_source.h"

namespace Nifikral {

/// What is done to each step of a run, one thing after the other.
struct FlowStages {
    std::function<std::optional<SourceStep>()> read;  ///< the next one; nothing behind the last
    std::function<void(SourceStep&)> work;            ///< on several steps at once, each on a thread of its own
    std::function<void(SourceStep&)> write;           ///< in the order in which they were read
};

/// Takes steps through the stages on several threads, with a bounded number of them in flight. Reading and writing are
/// each done by one thread at a time. A thread that finds nothing to do waits without taking processor time, which the
/// codecs' own threads and other programs get.
class StepFlow {
 public:
    /// At most `threads` threads, the caller's among them; others start when there is work for them.
    StepFlow(int threads, FlowStages stages);

    /// Returns when the last step is written; throws the first error of any stage. To be called once.
    void Run();

 private:
    enum class Task { None, Read, Work, Write };
    enum class State { Free, Read, Busy, Worked };
    struct Place {
        SourceStep step;
        State state = State::Free;
    };
    // What a thread does next, and for which step.
    struct Choice {
        Task task = Task::None;
        std::size_t number = 0;
    };

    Place& At(std::size_t number) { return m_places[number % m_places.size()]; }
    void TakePart();
    Choice Choose();
    void Begin(const Choice& choice);
    bool Do(const Choice& choice);
    void End(const Choice& choice, bool any);
    void CallHelp();
    bool IsOver() const { return m_error || (m_allRead && m_oldest == m_next); }

    const std::size_t m_mostThreads;
    const FlowStages m_stages;
    std::mutex m_mutex;  // of all below
    std::condition_variable m_changed;
    std::vector<std::thread> m_helpers;
    std::size_t m_waiting = 0;  // threads that have nothing to do
    std::vector<Place> m_places;
    std::size_t m_oldest = 0, m_next = 0;  // the steps in flight: from the oldest to the one before the next
    bool m_isReading = false, m_isWriting = false, m_allRead = false;
    std::exception_ptr m_error;
};

}  // namespace Nifikral
