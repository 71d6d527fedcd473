#include "host/studio/picture_cache.h"

namespace Nifikral {

FramePtr Referenced(const AVFrame& frame) { return Require<FramePtr>(av_frame_clone(&frame)); }

SharedFrame Shared(FramePtr frame) {
    return {frame.release(), [](AVFrame* owned) { av_frame_free(&owned); }};
}

std::size_t BytesOf(const AVFrame& frame) {
    std::size_t bytes = 0;
    for (const AVBufferRef* const buffer : frame.buf)
        if (buffer) bytes += std::size_t(buffer->size);
    return bytes;
}

SharedFrame PictureCache::Find(const std::string& key) {
    const std::lock_guard lock(m_mutex);
    const auto found = m_places.find(key);
    if (found == m_places.end()) return nullptr;
    m_entries.splice(m_entries.begin(), m_entries, found->second);
    return found->second->picture;
}

void PictureCache::Keep(const std::string& key, SharedFrame picture) {
    const std::lock_guard lock(m_mutex);
    if (m_places.contains(key)) return;
    m_bytes += BytesOf(*picture);
    m_entries.push_front({key, std::move(picture)});
    m_places[key] = m_entries.begin();
    // The newest one stays, however large it is.
    while (m_bytes > m_mostBytes && m_entries.size() > 1) {
        m_bytes -= BytesOf(*m_entries.back().picture);
        m_places.erase(m_entries.back().key);
        m_entries.pop_back();
    }
}

}  // namespace Nifikral
