#pragma once

#include <list>
#include <map>
#include <mutex>
#include <string>
#include <utility>

namespace Nifikral {

/// Values by a text that describes them, those last used, up to a number of bytes. Threads: any.
template <class Value>
class LastUsed {
 public:
    explicit LastUsed(std::size_t mostBytes) : m_mostBytes(mostBytes) {}

    /// An empty one where there is none.
    Value Find(const std::string& key) {
        const std::lock_guard lock(m_mutex);
        const auto found = m_places.find(key);
        if (found == m_places.end()) return {};
        m_entries.splice(m_entries.begin(), m_entries, found->second);
        return found->second->value;
    }

    void Keep(const std::string& key, Value value, std::size_t bytes) {
        const std::lock_guard lock(m_mutex);
        if (m_places.contains(key)) return;
        m_bytes += bytes;
        m_entries.push_front({key, std::move(value), bytes});
        m_places[key] = m_entries.begin();
        // The newest one stays, however large it is.
        while (m_bytes > m_mostBytes && m_entries.size() > 1) {
            m_bytes -= m_entries.back().bytes;
            m_places.erase(m_entries.back().key);
            m_entries.pop_back();
        }
    }

 private:
    struct Entry {
        std::string key;
        Value value;
        std::size_t bytes;
    };

    std::mutex m_mutex;
    std::list<Entry> m_entries;  // the last used one first
    std::map<std::string, typename std::list<Entry>::iterator> m_places;
    std::size_t m_mostBytes, m_bytes = 0;
};

}  // namespace Nifikral
