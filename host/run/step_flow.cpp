#include "host/run/step_flow.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace Nifikral {

StepFlow::StepFlow(int threads, FlowStages stages)
    : m_mostThreads(std::size_t(std::max(1, threads))), m_stages(std::move(stages)), m_places(2 * m_mostThreads + 1) {
    m_helpers.reserve(m_mostThreads - 1);
}

void StepFlow::Run() {
    TakePart();
    for (std::thread& helper : m_helpers) helper.join();
    if (m_error) std::rethrow_exception(m_error);
}

void StepFlow::TakePart() {
    std::unique_lock lock(m_mutex);
    while (!IsOver()) {
        const Choice choice = Choose();
        if (choice.task == Task::None) {
            ++m_waiting;
            m_changed.wait(lock);
            --m_waiting;
            continue;
        }
        Begin(choice);
        CallHelp();
        lock.unlock();
        std::exception_ptr error;
        bool any = false;
        try {
            any = Do(choice);
        } catch (...) {
            error = std::current_exception();
        }
        lock.lock();
        if (error && !m_error) m_error = error;
        End(choice, any);
    }
    m_changed.notify_all();
}

// What is nearest to the end comes first, so that memory is free again soon.
StepFlow::Choice StepFlow::Choose() {
    if (m_error) return {};
    if (!m_isWriting && m_oldest < m_next && At(m_oldest).state == State::Worked) return {Task::Write, m_oldest};
    for (std::size_t number = m_oldest; number < m_next; ++number)
        if (At(number).state == State::Read) return {Task::Work, number};
    if (!m_isReading && !m_allRead && m_next - m_oldest < m_places.size()) return {Task::Read, m_next};
    return {};
}

void StepFlow::Begin(const Choice& choice) {
    At(choice.number).state = State::Busy;
    if (choice.task == Task::Read) m_isReading = true;
    if (choice.task == Task::Write) m_isWriting = true;
}

// Where there is more to do: wakes a thread that waits, or starts one.
void StepFlow::CallHelp() {
    if (Choose().task == Task::None) return;
    if (m_waiting > 0) {
        m_changed.notify_one();
    } else if (m_helpers.size() + 1 < m_mostThreads) {
        try {
            m_helpers.emplace_back([this] { TakePart(); });
        } catch (const std::exception&) {
            // The machine gives no more threads, or no memory for one; those that run do it all.
        }
    }
}

// False where there was nothing left to read.
bool StepFlow::Do(const Choice& choice) {
    SourceStep& step = At(choice.number).step;
    if (choice.task == Task::Read) {
        std::optional<SourceStep> read = m_stages.read();
        if (read) step = std::move(*read);
        return read.has_value();
    }
    if (choice.task == Task::Work) {
        m_stages.work(step);
    } else {
        m_stages.write(step);
        step = {};
    }
    return true;
}

void StepFlow::End(const Choice& choice, bool any) {
    State& state = At(choice.number).state;
    if (choice.task == Task::Work) {
        state = State::Worked;
    } else if (choice.task == Task::Write) {
        m_isWriting = false;
        state = State::Free;
        ++m_oldest;
    } else {
        m_isReading = false;
        m_allRead = !any;
        state = any ? State::Read : State::Free;
        m_next += any ? 1 : 0;
    }
}

}  // namespace Nifikral
