#pragma once

#include <sys/types.h>

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "bridges/python/interpreter.h"
#include "host/run/effect_request.h"

namespace Nifikral::Python {

/// One effect as Python asks for it: a request as the command takes it, and more of its settings.
struct AskedEffect {
    std::string request;
    std::vector<std::pair<std::string, std::string>> settings;
};

/// The requests that these mean. Throws usage errors.
std::vector<EffectRequest> RequestsOf(const std::vector<AskedEffect>& asked);

/// A chain of effects that is called on pictures in arrays. It makes what the command makes of a film of these
/// pictures. Threads: any; calls run one after another. In a process that is forked off, it begins anew.
class Worker {
 public:
    Worker(std::vector<EffectRequest> requests, Order order, double frameRate);
    ~Worker();
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    /// `picture` is an array, or a tuple or list of those of its planes. The result is a new one, or `out` unless None.
    /// `position` counts frames from 0; without one the frame follows the last one.
    py::object Process(const py::object& picture, const py::object& out, std::optional<long long> position);

 private:
    struct State;
    struct Planes;

    py::object ProcessPacked(State& state, const py::object& picture, const py::object& out,
                             std::optional<long long> position);
    py::object ProcessPlanar(State& state, const py::sequence& picture, const py::object& out,
                             std::optional<long long> position);
    // Of this process.
    State& Own();
    void Run(State& state, const Planes& planes, bool overBlack, std::optional<long long> position) const;

    std::vector<EffectRequest> m_requests;
    Order m_order;
    double m_frameRate;
    unsigned m_traits = 0;
    pid_t m_process;
    std::unique_ptr<State> m_state;
};

}  // namespace Nifikral::Python
