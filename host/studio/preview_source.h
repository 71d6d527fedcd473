#pragma once

#include <atomic>
#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "host/studio/film_reader.h"
#include "host/studio/last_used.h"
#include "host/studio/shared_frame.h"

namespace Nifikral {

/// A picture in another size and layout; its colours stay.
FramePtr Scaled(const AVFrame& whole, const PictureShape& shape);

/// One frame of a file as a preview wants it: `shape` has its size and layout.
struct WantedPicture {
    std::string path;
    long long number = 0;
    PictureShape shape;
};

/// The pictures and films that a studio shows, decoded and scaled once for all that look at them. Threads: any.
class PreviewSources {
 public:
    PreviewSources();
    ~PreviewSources();
    PreviewSources(const PreviewSources&) = delete;
    PreviewSources& operator=(const PreviewSources&) = delete;

    /// Throws what MediaSource throws.
    SourceFacts Facts(const std::string& path);
    SharedFrame Picture(const WantedPicture& wanted);
    /// Decodes frames behind this one on a thread of its own, as long as nobody wants others.
    void ReadAhead(const WantedPicture& from);

 private:
    struct Reader {
        std::mutex mutex;
        std::unique_ptr<FilmReader> film;
        std::atomic<long long> at = 0;  // the frame that it has, or was sent for
        long long lastUse = 0;
    };
    struct Source {
        std::mutex mutex;
        std::optional<SourceFacts> facts;
        std::atomic<long long> lastUse = 0;
        std::vector<std::shared_ptr<Reader>> readers;
    };

    // While it lives, nothing is read ahead.
    std::shared_ptr<void> Wanting();
    std::shared_ptr<Source> Open(const std::string& key);
    std::shared_ptr<Reader> ReaderFor(Source& source, const std::string& path, long long number);
    SharedFrame Made(const WantedPicture& wanted);
    static constexpr long long framesAhead = 12;
    SharedFrame Whole(const Source& source, Reader& reader, const std::string& key, const WantedPicture& wanted);
    void Work();

    std::mutex m_mutex;
    std::map<std::string, std::shared_ptr<Source>> m_sources;  // by path and time of change
    std::atomic<long long> m_uses = 0;
    std::atomic<int> m_wanting = 0;  // pictures that are waited for
    LastUsed<SharedFrame> m_pictures, m_wholes;

    std::mutex m_aheadMutex;
    std::condition_variable m_aheadChanged;
    WantedPicture m_ahead;
    long long m_aheadVersion = 0;
    bool m_ends = false;
    std::thread m_worker;
};

}  // namespace Nifikral
