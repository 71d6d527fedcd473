#include "host/studio/preview_source.h"

#include <algorithm>
#include <chrono>

#include "host/base/errors.h"
#include "host/disc/stages.h"

namespace Nifikral {
namespace {

constexpr std::size_t pictureBytes = 256 << 20, wholeBytes = 192 << 20, mostSources = 64, mostReaders = 3;

std::string KeyOf(const WantedPicture& wanted, const std::string& file) {
    const PictureShape& shape = wanted.shape;
    std::string key = file;
    for (const long long part :
         {wanted.number, (long long)shape.format, (long long)shape.width, (long long)shape.height})
        key.append("/").append(std::to_string(part));
    return key;
}

}  // namespace

// Smaller by far at once: of each pixel what lies within it, instead of what is around it.
FramePtr Scaled(const AVFrame& whole, const PictureShape& shape) {
    FramePtr frame = Referenced(whole);
    const PictureShape from = ShapeOf(whole);
    if (from.width != shape.width || from.height != shape.height) {
        PictureShape to = from;
        to.width = shape.width;
        to.height = shape.height;
        to.matrix = from.matrix == AVCOL_SPC_UNSPECIFIED ? UsualMatrix(from.height) : from.matrix;
        const ScalerPtr scaler = MakeScaler(from, to, SWS_AREA);
        if (!scaler) throw HostError(ExitCode::Failed, "pictures of this format cannot be scaled; convert them first");
        FramePtr scaled = NewPicture(to.format, to.width, to.height);
        sws_scale(scaler.get(), whole.data, whole.linesize, 0, whole.height, scaled->data, scaled->linesize);
        if (av_frame_copy_props(scaled.get(), &whole) < 0) throw std::bad_alloc();
        scaled->crop_left = scaled->crop_top = scaled->crop_right = scaled->crop_bottom = 0;
        scaled->colorspace = IsRgb(to.format) ? AVCOL_SPC_RGB : to.matrix;
        frame = std::move(scaled);
    }
    PictureConverter(shape).Convert(frame);
    return frame;
}

PreviewSources::PreviewSources() : m_pictures(pictureBytes), m_wholes(wholeBytes), m_worker([this] { Work(); }) {}

PreviewSources::~PreviewSources() {
    {
        const std::lock_guard lock(m_aheadMutex);
        m_ends = true;
    }
    m_aheadChanged.notify_all();
    m_worker.join();
}

std::shared_ptr<PreviewSources::Source> PreviewSources::Open(const std::string& key) {
    const std::lock_guard lock(m_mutex);
    std::shared_ptr<Source>& source = m_sources[key];
    if (!source) source = std::make_shared<Source>();
    source->lastUse = ++m_uses;
    std::shared_ptr<Source> found = source;
    if (m_sources.size() > mostSources)
        m_sources.erase(std::min_element(m_sources.begin(), m_sources.end(), [](const auto& a, const auto& b) {
            return a.second->lastUse < b.second->lastUse;
        }));
    return found;
}

// The one that gets there with the fewest steps, another one while there may be more, or else the one that has rested
// longest.
std::shared_ptr<PreviewSources::Reader> PreviewSources::ReaderFor(Source& source, const std::string& path,
                                                                  long long number) {
    const std::lock_guard lock(source.mutex);
    constexpr long long near = 50;
    std::shared_ptr<Reader> best;
    for (const std::shared_ptr<Reader>& reader : source.readers)
        if (reader->at - number <= framesAhead && number - reader->at < near && (!best || reader->at > best->at))
            best = reader;
    if (!best && source.readers.size() < mostReaders) {
        best = source.readers.emplace_back(std::make_shared<Reader>());
        if (!source.facts) {
            best->film = std::make_unique<FilmReader>(path);
            source.facts = best->film->Facts();
        }
    }
    if (!best)
        best = *std::min_element(source.readers.begin(), source.readers.end(),
                                 [](const auto& a, const auto& b) { return a->lastUse < b->lastUse; });
    // One that has read ahead has this frame already, or goes back to it.
    if (best->at < number || best->at - number > framesAhead) best->at = number;
    best->lastUse = ++m_uses;
    return best;
}

std::shared_ptr<void> PreviewSources::Wanting() {
    ++m_wanting;
    return {nullptr, [this](void*) { --m_wanting; }};
}

SourceFacts PreviewSources::Facts(const std::string& path) {
    const auto wanting = Wanting();
    const std::shared_ptr<Source> source = Open(KeyOfFile(path));
    {
        const std::lock_guard lock(source->mutex);
        if (source->facts) return *source->facts;
        source->readers.clear();
    }
    ReaderFor(*source, path, 0);
    return *source->facts;
}

// A photograph stays as it was decoded, for other sizes; of a film, the reader has the frame.
SharedFrame PreviewSources::Whole(const Source& source, Reader& reader, const std::string& key,
                                  const WantedPicture& wanted) {
    const bool still = !source.facts->IsFilm();
    if (still)
        if (SharedFrame kept = m_wholes.Find(key)) return kept;
    if (!reader.film) reader.film = std::make_unique<FilmReader>(wanted.path, *source.facts);
    SharedFrame whole = Shared(reader.film->At(wanted.number));
    if (still) {
        m_wholes.Keep(key, whole, BytesOf(*whole));
        reader.film.reset();
    }
    return whole;
}

SharedFrame PreviewSources::Picture(const WantedPicture& wanted) {
    const auto wanting = Wanting();
    return Made(wanted);
}

SharedFrame PreviewSources::Made(const WantedPicture& wanted) {
    const std::string file = KeyOfFile(wanted.path), key = KeyOf(wanted, file);
    if (SharedFrame kept = m_pictures.Find(key)) return kept;
    const std::shared_ptr<Source> source = Open(file);
    const std::shared_ptr<Reader> reader = ReaderFor(*source, wanted.path, wanted.number);
    const std::lock_guard lock(reader->mutex);
    // Another one may have waited for the same.
    if (SharedFrame kept = m_pictures.Find(key)) return kept;
    SharedFrame picture = Shared(Scaled(*Whole(*source, *reader, file, wanted), wanted.shape));
    m_pictures.Keep(key, picture, BytesOf(*picture));
    return picture;
}

void PreviewSources::ReadAhead(const WantedPicture& from) {
    {
        const std::lock_guard lock(m_aheadMutex);
        m_ahead = from;
        ++m_aheadVersion;
    }
    m_aheadChanged.notify_all();
}

void PreviewSources::Work() {
    long long seen = 0;
    for (;;) {
        WantedPicture wanted;
        {
            std::unique_lock lock(m_aheadMutex);
            m_aheadChanged.wait(lock, [&] { return m_ends || m_aheadVersion != seen; });
            if (m_ends) return;
            wanted = m_ahead;
            seen = m_aheadVersion;
        }
        const auto isLast = [&] {
            const std::lock_guard lock(m_aheadMutex);
            return !m_ends && m_aheadVersion == seen;
        };
        try {
            const long long last = std::min(wanted.number + framesAhead, Facts(wanted.path).frames - 1);
            while (wanted.number < last && isLast()) {
                // What is looked at comes first.
                if (m_wanting > 0) {
                    std::this_thread::sleep_for(std::chrono::milliseconds(2));
                    continue;
                }
                ++wanted.number;
                Made(wanted);
            }
        } catch (const std::exception&) {
            // Who looks at that frame gets to know.
            continue;
        }
    }
}

}  // namespace Nifikral
