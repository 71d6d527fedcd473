#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "host/media/ffmpeg_handles.h"
#include "host/media/frame_range.h"
#include "host/media/media_source.h"
#include "host/media/picture_formats.h"

namespace Nifikral {

struct FilmProfile;

/// What is known of a film before it is encoded for good: how hard each picture was in the first of two passes.
struct StatisticsOfPass {
    std::string text;
    bool complete = false;  ///< the first pass has ended
};

/// Draws a text for a film of so many square pixels: BGRA, colours not multiplied by alpha, no larger than the film.
using PaintText = std::function<FramePtr(const std::string& text, bool italic, int width, int height)>;

struct OutputOptions {
    std::string path;     ///< "-" for stdout; a name with %06d or the like for one picture file a frame
    std::string format;   ///< a container's name; empty: by the path's extension
    std::string encoder;  ///< an FFmpeg encoder's name; empty: the usual one
    std::vector<std::string> encoderOptions;  ///< "key=value" for the encoder
    std::string
        audioEncoder;      ///< for all sound; empty: it is copied, or encoded as is usual, as the container takes it
    int audioBitRate = 0;  ///< for all sound, which is then encoded; 0: the usual one
    bool sound = true;     ///< whether the input's goes along
    bool extras = true;    ///< whether the input's subtitles, cover pictures and chapters go along
    bool progressive = false;  ///< interlaced pictures are made whole
    bool overwrite = false;
    int threads = 1;
    std::vector<double> keyTimes;            ///< in order, the seconds at which players are to be able to begin
    bool silence = false;                    ///< a film without sound gets a silent track
    PaintText paintSubtitle;                 ///< where it is set, all subtitles become pictures as video DVDs have them
    std::vector<std::string> subtitleFiles;  ///< then, what follows those of the input
    StatisticsOfPass* firstPass = nullptr;   ///< where the first of two passes puts what the second reads; borrowed
    std::optional<FrameRange> chunk;         ///< only this chunk of the output is made, for JoinChunks
    std::string mark;                        ///< of the run that the output belongs to
};

/// What the output inherits from where its pictures come from.
struct OutputTraits {
    PictureShape source;
    AVPixelFormat preferred = AV_PIX_FMT_NONE;  ///< taken when the encoder can
    AVColorPrimaries primaries = AVCOL_PRI_UNSPECIFIED;
    AVColorTransferCharacteristic transfer = AVCOL_TRC_UNSPECIFIED;
    AVColorRange range = AVCOL_RANGE_UNSPECIFIED;
    AVChromaLocation chromaLocation = AVCHROMA_LOC_UNSPECIFIED;
    AVRational pixelAspect = {0, 1}, frameRate = {25, 1}, timeBase = {1, 25};
    AVFieldOrder fieldOrder = AV_FIELD_PROGRESSIVE;
    bool dvd = false;                             ///< the stream is to be as video DVDs have it; OpenSink decides
    const FilmProfile* profile = nullptr;         ///< what the pictures are fitted to, or null
    AVPixelFormat translucent = AV_PIX_FMT_NONE;  ///< preferred where the output is for pictures with alpha
    bool fades = false;                           ///< that alpha comes of fades, which films show over black
    std::vector<const AVStream*> audio;
    bool soundIsRaw = false;  ///< the audio was made for this output and is to be encoded
    const AVDictionary* metadata = nullptr;
    std::vector<const AVStream*> extras;   ///< subtitles, cover pictures and attached files
    std::span<AVChapter* const> chapters;  ///< in the input's time
    double begin = 0, end = 0;             ///< what the output takes of the input, in seconds of its time
    std::vector<std::string> photographs;  ///< the files of the input's pictures, by their numbers; what these say of
                                           ///< themselves goes along
};

/// The traits of an input, whose streams they borrow.
OutputTraits TraitsOf(const MediaSource& input, AVPixelFormat preferred);
/// The traits of a film that is made here: progressive, square pixels, limited range and the usual colours for its
/// height. Times count frames.
OutputTraits TraitsOfFilm(int width, int height, AVRational frameRate, AVPixelFormat preferred);

/// Encodes pictures and stores them. What it has begun and not finished leaves nothing under a final name. Throws
/// output errors that name the file and the remedy. Threads: one at a time.
class MediaSink {
 public:
    virtual ~MediaSink() = default;
    /// How pictures must come.
    virtual const PictureShape& Shape() const = 0;
    virtual std::string Description() const = 0;
    /// Whether it stores each picture once, so that chunks of a run can be joined.
    virtual bool KeepsFrames() const { return true; }
    /// `number` is the picture's within the whole input; its time is in the input's time base.
    virtual void Write(FramePtr frame, long long number) = 0;
    virtual void WriteAudio(PacketPtr) {}
    /// Whether pictures of this coding are as this sink would code them itself, and WriteCoded takes them.
    virtual bool CodesAlike(const AVCodecParameters&) const { return false; }
    /// A picture that is coded already; its times are in `timeBase`.
    virtual void WriteCoded(PacketPtr, AVRational /*timeBase*/) {}
    virtual void Finish() = 0;
    /// What is left of the output when Finish is not reached.
    virtual std::string Kept() const { return "no output was kept"; }
};

/// Whether OpenSink makes a sink for stills of this.
bool IsPictureOutput(const OutputOptions& options);
/// Whether each picture goes to a file of its own, named by its number.
bool IsNumberedOutput(const OutputOptions& options);
/// The sink for a path: a video, one still, or numbered stills. With `tryOnly` nothing is made; only the checks run.
std::unique_ptr<MediaSink> OpenSink(const OutputOptions& options, const OutputTraits& traits, bool tryOnly);

}  // namespace Nifikral
