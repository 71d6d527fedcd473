#pragma once

#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "host/media/ffmpeg_handles.h"

namespace Nifikral {

using SharedFrame = std::shared_ptr<const AVFrame>;

/// Another owner of the same picture.
FramePtr Referenced(const AVFrame& frame);
/// A picture that several may look at.
SharedFrame Shared(FramePtr frame);
/// What a picture takes of the memory.
std::size_t BytesOf(const AVFrame& frame);

/// Pictures by a text that describes them, those last used, up to a number of bytes. Threads: any.
class PictureCache {
 public:
    explicit PictureCache(std::size_t mostBytes) : m_mostBytes(mostBytes) {}

    /// Null where there is none.
    SharedFrame Find(const std::string& key);
    void Keep(const std::string& key, SharedFrame picture);

 private:
    struct Entry {
        std::string key;
        SharedFrame picture;
    };

    std::mutex m_mutex;
    std::list<Entry> m_entries;  // the last used one first
    std::map<std::string, std::list<Entry>::iterator> m_places;
    std::size_t m_mostBytes, m_bytes = 0;
};

}  // namespace Nifikral
