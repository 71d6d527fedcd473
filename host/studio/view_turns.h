#pragma once

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <string>

namespace Nifikral {

/// A request's turn at a view: it holds the view for itself as long as it lives.
class ViewTurn {
 public:
    /// Throws Superseded when a newer request of the view has come, and what ends an interrupted run.
    void RequireNewest() const;

 private:
    template <class State>
    friend class ViewTurns;
    // A counter of requests, and the lock of the one that works.
    struct Counter {
        std::atomic<long long> newest = 0;
        std::mutex working;
    };
    ViewTurn(std::shared_ptr<Counter> counter, long long number)
        : m_counter(std::move(counter)), m_number(number), m_lock(m_counter->working) {
        RequireNewest();
    }

    std::shared_ptr<Counter> m_counter;
    long long m_number;
    std::unique_lock<std::mutex> m_lock;
};

/// What a studio keeps for each view of its pages, those last used. Of the requests of a view one at a time works, and
/// all but the newest are dropped. Threads: any.
template <class State>
class ViewTurns {
 public:
    explicit ViewTurns(std::size_t mostViews) : m_mostViews(mostViews) {}

    struct View;
    /// A view that a request has for itself.
    struct Held {
        std::shared_ptr<View> view;
        ViewTurn turn;

        State& Own() const { return view->state; }
    };

    /// Waits for the view. Throws Superseded.
    Held Take(const std::string& view) {
        std::shared_ptr<View> own;
        long long number = 0;
        {
            const std::lock_guard lock(m_mutex);
            own = Find(view);
            number = ++own->counter->newest;
        }
        return {own, ViewTurn(own->counter, number)};
    }

    struct View {
        std::shared_ptr<ViewTurn::Counter> counter = std::make_shared<ViewTurn::Counter>();
        State state;
        long long lastUse = 0;
    };

 private:
    std::shared_ptr<View> Find(const std::string& name) {
        std::shared_ptr<View>& view = m_views[name];
        if (!view) view = std::make_shared<View>();
        view->lastUse = ++m_uses;
        std::shared_ptr<View> found = view;
        if (m_views.size() > m_mostViews) {
            auto oldest = m_views.begin();
            for (auto other = m_views.begin(); other != m_views.end(); ++other)
                if (other->second->lastUse < oldest->second->lastUse) oldest = other;
            m_views.erase(oldest);
        }
        return found;
    }

    std::mutex m_mutex;
    std::map<std::string, std::shared_ptr<View>> m_views;
    long long m_uses = 0;
    std::size_t m_mostViews;
};

}  // namespace Nifikral
