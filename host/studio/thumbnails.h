#pragma once

#include <mutex>
#include <string>

#include "host/studio/last_used.h"
#include "host/studio/studio_folder.h"
#include "host/studio/web_message.h"

namespace Nifikral {

/// Small pictures of pictures and films. They are made one at a time, behind the pictures that are worked on, and kept.
/// Threads: any.
class Thumbnails {
 public:
    explicit Thumbnails(const StudioFolder& folder) : m_folder(folder) {}

    /// One that fits into a square. `at`: the second of a film; below 0: one that shows more than its beginning.
    /// `known`: the tag of the one that the browser has.
    WebReply Reply(const std::string& path, int size, double at, const std::string& known);

 private:
    const StudioFolder& m_folder;
    std::mutex m_working;
    static constexpr std::size_t mostBytes = 48 << 20;
    LastUsed<std::string> m_made{mostBytes};
};

}  // namespace Nifikral
