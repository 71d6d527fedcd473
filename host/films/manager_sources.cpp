#include "host/films/manager_sources.h"

#include <tbb/info.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <stdexcept>

#include "TarvoBased/CBaseException.h"
#include "TarvoBased/boundary.h"
#include "TarvoBased/error_codes.h"
#include "avbase/avbase_srcutils/pixel_formats.h"
#include "host/films/styled_text.h"
#include "host/films/text_renderer.h"
#include "host/media/ffmpeg_log.h"
#include "host/media/frame_adapter.h"
#include "host/media/media_source.h"
#include "host/media/picture_formats.h"

namespace Nifikral {
namespace {

using namespace TarvoBased;
using AVBased::IRawVideoFrame;

constexpr char sourceName[] = "manager_sources";
// Lines that a caller reads beside an error of this unit.
enum Line : int { lineInterface = 20, lineRead = 40, lineProperty = 60, lineHtml = 80, lineBreaks = 100 };

using AVBased::formatRgba32;

// A frame for the caller, who may keep it longer than the source.
IRawVideoFrame* HandOver(FramePtr frame, unsigned formatCode) {
    return new FrameAdapter(std::move(frame), formatCode, 0);
}

class Source : public AVBased::IAVSource {
 public:
    void* GetInterface(const char* name) override {
        return AtBoundary(lineInterface, sourceName, [&] {
            RequirePointer(name, lineInterface, sourceName);
            void* const found = FindInterface(name);
            if (!found) throw CBaseException(errorNoInterface, name, lineInterface, sourceName);
            return found;
        });
    }
    IRawVideoFrame* ReadFrame() override {
        return AtBoundary(lineRead, sourceName, [&] { return Read(); });
    }
    void Free() override { delete this; }

 protected:
    virtual ~Source() = default;

 private:
    virtual void* FindInterface(const char*) { return nullptr; }
    virtual IRawVideoFrame* Read() = 0;
};

class PictureSource final : public Source, public AVBased::IAVSourcePropertySet {
 public:
    explicit PictureSource(FramePtr picture) : m_picture(std::move(picture)) {
        PictureShape shape = ShapeOf(*m_picture);
        shape.format = FfmpegFormat(formatRgba32);
        PictureConverter(shape).Convert(m_picture);
    }

    const AVFrame& Picture() const { return *m_picture; }
    bool IsStill() override { return true; }
    bool SetProperty(int identifier, int value) override {
        return AtBoundary(lineProperty, sourceName, [&] {
            if (identifier != stillDuration || value < 0)
                throw CBaseException(errorGeneral, textInvalidParamValue, lineProperty, sourceName);
            m_duration = unsigned(value);
            return true;
        });
    }

 private:
    void* FindInterface(const char* name) override {
        return std::strcmp(name, AVBased::IAVSourcePropertySet::name) == 0
                   ? static_cast<AVBased::IAVSourcePropertySet*>(this)
                   : nullptr;
    }
    IRawVideoFrame* Read() override {
        IRawVideoFrame* const frame = HandOver(Require<FramePtr>(av_frame_clone(m_picture.get())), formatRgba32);
        frame->SetDuration(m_duration);
        return frame;
    }

    FramePtr m_picture;
    unsigned m_duration = 0;
};

MediaSource OpenMedia(const std::string& path, double begin = 0) {
    // Without its messages a decoder reports all damage only when it works on one frame at a time.
    const int mostThreads = CapturesFfmpegMessages() ? 4 : 1;
    // A lone hyphen is a file here, not stdin.
    return {path == "-" ? "./-" : path,
            {.range = {},
             .threads = std::min(tbb::info::default_concurrency(), mostThreads),
             .audio = false,
             .largestSide = largestSide,
             .damageRemedy = "repair it or save it anew",
             .begin = begin}};
}

FramePtr NextFrame(MediaSource& media) {
    std::optional<SourceStep> step = media.Next();
    return step ? std::move(step->frame) : nullptr;
}

double Seconds(std::int64_t time, AVRational base) { return double(time) * av_q2d(base); }

class VideoSource final : public Source {
 public:
    // `first` and `second` were already taken from `media`.
    VideoSource(const std::string& path, const Playback& playback, MediaSource media, FramePtr first, FramePtr second)
        : m_path(path),
          m_playback(playback),
          m_media(std::move(media)),
          m_base(m_media.VideoStream().time_base),
          m_origin(first->pts),
          m_current(std::move(first)),
          m_next(std::move(second)),
          m_converter(WantedShape(*m_current)) {}

    bool IsStill() override { return false; }

 private:
    PictureShape WantedShape(const AVFrame& first) {
        PictureShape shape = ShapeOf(first);
        m_formatCode = EffectFormat(shape.format, false);
        shape.format = FfmpegFormat(m_formatCode);
        shape.matrix = UsualMatrix(shape.height);
        shape.fullRange = false;
        return shape;
    }

    IRawVideoFrame* Read() override {
        if (m_playback.rate.num > 0)
            PlayUntil(double(m_read) * m_playback.rate.den / m_playback.rate.num);
        else if (m_read > 0)
            Step(0);
        ++m_read;
        if (!m_shown) {
            m_shown = Require<FramePtr>(av_frame_clone(m_current.get()));
            m_converter.Convert(m_shown);
        }
        return HandOver(Require<FramePtr>(av_frame_clone(m_shown.get())), m_formatCode);
    }

    // When the frame after the current one comes, or the video ends, in seconds since the first read.
    double EndOfCurrent() const {
        const std::int64_t end = m_next ? m_next->pts : m_current->pts + m_current->pkt_duration;
        return m_passBegin + Seconds(end - m_origin, m_base);
    }

    void PlayUntil(double time) {
        // Times are rounded to the stream's ticks; where these are as long as frames are, they are exact.
        const double tick = av_q2d(m_base) / 2, frame = 1 / av_q2d(m_playback.rate);
        const double now = time + (tick <= frame / 4 ? tick : 0) + 1e-9;
        while (EndOfCurrent() <= now && (m_next || m_playback.loops)) Step(now);
    }

    // On to the next frame, or over again, to the pass that holds a time.
    void Step(double time) {
        if (!m_next) {
            if (!m_playback.loops) return;
            const double length = EndOfCurrent() - m_passBegin;
            m_passBegin += length * std::max(1.0, std::floor((time - m_passBegin) / length));
            m_media = OpenMedia(m_path, m_playback.begin / 1000.0);
            m_next = NextFrame(m_media);
            m_origin = m_next->pts;
        }
        m_current = std::move(m_next);
        m_next = NextFrame(m_media);
        m_shown.reset();
    }

    std::string m_path;
    Playback m_playback;
    MediaSource m_media;
    AVRational m_base;
    std::int64_t m_origin;       // the time of the first frame
    double m_passBegin = 0;      // when it began to play this time, in seconds since the first read
    std::int64_t m_read = 0;     // frames handed out
    FramePtr m_current, m_next;  // as decoded; behind the last frame there is none
    FramePtr m_shown;            // the current one as it is handed out
    unsigned m_formatCode = 0;
    PictureConverter m_converter;
};

// What the renderer has against a text, as a module's error.
template <class Work>
auto WithText(int line, Work work) {
    try {
        return work();
    } catch (const std::runtime_error& error) {
        throw CBaseException(errorBadFormat, error.what(), line, sourceName);
    }
}

class TextSource final : public Source, public AVBased::ISimpleHTMLRender, public AVBased::ITextLines {
 public:
    bool IsStill() override { return true; }
    bool SetHTML(const char* html) override {
        return AtBoundary(lineHtml, sourceName, [&] {
            RequirePointer(html, lineHtml, sourceName);
            m_text = ParseFontElement(html);
            m_picture.reset();
            if (!m_text)
                throw CBaseException(errorBadFormat,
                                     "A text is to be <font color='#rrggbb' size='' face='' fontstyle=''>", lineHtml,
                                     sourceName);
            WithText(lineHtml, [&] { CheckText(*m_text); });
            return true;
        });
    }
    const char* BreakLines(unsigned width, bool withinWords) override {
        return AtBoundary(lineBreaks, sourceName, [&] {
            RequireText(lineBreaks);
            m_lines = WithText(lineBreaks, [&] {
                return Nifikral::BreakLines(*m_text, int(std::min(width, unsigned(largestSide))), withinWords);
            });
            return m_lines.c_str();
        });
    }

 private:
    void* FindInterface(const char* name) override {
        if (std::strcmp(name, AVBased::ISimpleHTMLRender::name) == 0)
            return static_cast<AVBased::ISimpleHTMLRender*>(this);
        return std::strcmp(name, AVBased::ITextLines::name) == 0 ? static_cast<AVBased::ITextLines*>(this) : nullptr;
    }
    IRawVideoFrame* Read() override {
        RequireText(lineRead);
        if (!m_picture) m_picture = WithText(lineRead, [&] { return RenderText(*m_text); });
        return HandOver(Require<FramePtr>(av_frame_clone(m_picture.get())), formatRgba32);
    }
    void RequireText(int line) const {
        if (!m_text) throw CBaseException(errorGeneral, "The text is not set yet", line, sourceName);
    }

    std::optional<StyledText> m_text;
    FramePtr m_picture;
    std::string m_lines;
};

}  // namespace

AVBased::IAVSource* OpenPictureSource(const std::string& path) {
    MediaSource media = OpenMedia(path);
    FramePtr first = NextFrame(media);
    // Whether a picture is cut short shows behind it.
    NextFrame(media);
    return new PictureSource(std::move(first));
}

AVBased::IAVSource* NewPictureSource(FramePtr picture) { return new PictureSource(std::move(picture)); }

AVBased::IAVSource* OpenFileSource(const std::string& path, const Playback& playback,
                                   const std::function<void(const AVFrame&)>& keep) {
    MediaSource media = OpenMedia(path, playback.begin / 1000.0);
    FramePtr first = NextFrame(media), second = NextFrame(media);
    if (!second) {
        auto* const picture = new PictureSource(std::move(first));
        keep(picture->Picture());
        return picture;
    }
    return new VideoSource(path, playback, std::move(media), std::move(first), std::move(second));
}

AVBased::IAVSource* NewTextSource() { return new TextSource; }

}  // namespace Nifikral
