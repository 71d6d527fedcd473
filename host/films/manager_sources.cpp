#include "host/films/manager_sources.h"

#include <algorithm>
#include <cstring>
#include <deque>
#include <stdexcept>
#include <thread>

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

// A frame of its own for the caller, who may change it and keep it longer than the source.
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

MediaSource OpenMedia(const std::string& path) {
    // Without its messages a decoder reports all damage only when it works on one frame at a time.
    const unsigned mostThreads = CapturesFfmpegMessages() ? 4 : 1;
    // A lone hyphen is a file here, not stdin.
    return {path == "-" ? "./-" : path,
            {.range = {},
             .threads = int(std::clamp(std::thread::hardware_concurrency(), 1u, mostThreads)),
             .audio = false,
             .largestSide = largestSide,
             .damageRemedy = "repair it or save it anew"}};
}

FramePtr NextFrame(MediaSource& media) {
    std::optional<SourceStep> step = media.Next();
    return step ? std::move(step->frame) : nullptr;
}

class VideoSource final : public Source {
 public:
    // `begun` are the frames that were already taken from `media`.
    VideoSource(const std::string& path, MediaSource media, std::deque<FramePtr> begun)
        : m_path(path),
          m_media(std::move(media)),
          m_begun(std::move(begun)),
          m_converter(WantedShape(*m_begun.front())) {}

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
        FramePtr frame;
        if (!m_begun.empty()) {
            frame = std::move(m_begun.front());
            m_begun.pop_front();
        } else {
            frame = NextFrame(m_media);
        }
        if (!frame) {
            m_media = OpenMedia(m_path);
            frame = NextFrame(m_media);
        }
        m_converter.Convert(frame);
        return HandOver(std::move(frame), m_formatCode);
    }

    std::string m_path;
    MediaSource m_media;
    std::deque<FramePtr> m_begun;
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

AVBased::IAVSource* OpenFileSource(const std::string& path) {
    MediaSource media = OpenMedia(path);
    std::deque<FramePtr> begun;
    begun.push_back(NextFrame(media));
    FramePtr second = NextFrame(media);
    if (!second) return new PictureSource(std::move(begun.front()));
    begun.push_back(std::move(second));
    return new VideoSource(path, std::move(media), std::move(begun));
}

AVRational VideoFrameRate(const std::string& path) { return OpenMedia(path).FrameRate(); }

AVBased::IAVSource* NewTextSource() { return new TextSource; }

}  // namespace Nifikral
