#pragma once

#include <deque>
#include <limits>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "host/media/ffmpeg_handles.h"
#include "host/media/ffmpeg_log.h"
#include "host/media/frame_range.h"
#include "host/media/numbered_files.h"
#include "host/media/orientation.h"
#include "host/media/picture_formats.h"
#include "host/media/picture_reader.h"
#include "host/media/standard_input.h"

namespace Nifikral {

/// One step of the input: a picture, or at the end none, with the audio that was read on the way to it.
struct SourceStep {
    FramePtr frame;
    long long number = 0;  ///< of the picture within the whole input, from 0
    std::vector<PacketPtr> audio;
};

/// Opens a picture, a video or a sequence of pictures and decodes it, upright, in order. Throws input errors that name
/// the file and the remedy. Threads: one at a time.
class MediaSource {
 public:
    struct Options {
        FrameRange range = {};
        FrameRange chunk =
            {};  ///< what of the range Next hands out; times count from the range's first frame all the same
        int threads = 1;
        bool keepGoing = false;  ///< go on with what is readable of a damaged input
        bool audio = true;
        bool extras = false;  ///< hand out the packets of subtitles among those of the audio
        int largestSide = std::numeric_limits<int>::max();  ///< pictures with a longer one are refused
        Gaps gaps = Gaps::Refuse;                           ///< in numbered pictures
        /// What a message about a damaged input advises.
        const char* damageRemedy = "--keep-going takes what is readable";
        /// Seconds of the film that are skipped: it is as if it began behind them. For pictures without sound.
        double begin = 0;
        /// Comes with the film's key frame at `begin` or before it, which is there at once; GoTo leads on from it.
        bool keyFrame = false;
        /// Photographs may come smaller than they are, with a longer side of at least this; 0: as they are.
        int enoughSide = 0;
    };

    MediaSource(const std::string& path, const Options& options);

    /// The next picture of the range; without a frame once, at the end, then nothing.
    std::optional<SourceStep> Next();

    /// Goes on as if the film began at a time, like Options::begin, or with its key frame there, like
    /// Options::keyFrame; for one that reads a whole film alone. False where that is impossible: then nothing can be
    /// read any more.
    bool GoTo(double seconds, bool keyFrame = false);

    /// Before Next is called for the picture at a later time alone, of such a one: those before it may be missing then.
    /// False where a key frame lies between, so that GoTo is the shorter way.
    bool ReadsOnTo(double seconds);
    /// Whether the container has no times for some pictures, as far as read: then GoTo reads from its beginning.
    bool LacksTimes() const { return m_lacksTimes; }

    /// For one who has the pictures already, instead of Next: more audio of the range, up to a time or further; nothing
    /// behind its end.
    std::vector<PacketPtr> AudioUntil(double seconds);

    /// The first picture as it comes out, so that everything behind can be prepared for it.
    const AVFrame& FirstFrame() const { return *m_pending; }
    /// How the input has pictures that come out like `frame`. They may come out as BGRA all the same, which full-range
    /// colours are to become anyway.
    PictureShape Shape(const AVFrame& frame) const;
    const AVStream& VideoStream() const { return *m_video; }
    std::vector<const AVStream*> AudioStreams() const;
    /// Subtitles, cover pictures and attached files; none where they were not asked for.
    std::vector<const AVStream*> ExtraStreams() const;
    std::span<AVChapter* const> Chapters() const;
    /// Where the range begins and ends in the container's time, in seconds, as far as its frame rate says.
    std::pair<double, double> Window() const;
    /// The picture files that are read, by their numbers; none of a video or a pipe.
    std::vector<std::string> Photographs() const;
    const AVDictionary* Metadata() const { return m_input->metadata; }
    AVRational FrameRate() const;
    /// Seconds that the pictures last as the container has it; 0 when unknown.
    double Length() const;
    /// The number of pictures as the container has it or as its times suggest; 0 when unknown.
    long long EstimatedFrameCount() const;
    /// Counts the pictures of a range by reading through the file once more; 0 when that is impossible (a pipe).
    long long CountFrames(const FrameRange& range) const;

 private:
    void OpenReader();
    void OpenDecoder(const std::string& file);
    std::int64_t TimeAt(double seconds) const { return m_origin + std::int64_t(seconds / av_q2d(m_video->time_base)); }
    bool HoldsWholePictures() const { return m_video->codecpar->field_order <= AV_FIELD_PROGRESSIVE; }
    void PassTo(std::int64_t time);
    bool Seek(std::int64_t time);
    bool SeekKeyFrame(std::int64_t time);
    PacketPtr ReadKeyPacket(std::int64_t time);
    void NoteTimes(const AVPacket& packet);
    void ForgetPlace();
    void Rewind();
    FramePtr DecodeUpTo(std::int64_t time);
    FramePtr DecodeFrom(double seconds);
    FramePtr DecodeKeyFrame();
    void RefuseHugePictures() const;
    FramePtr DecodeNext();
    FramePtr ReadNext();
    FramePtr ReceiveFrame();
    void SendPacket(const AVPacket& packet);
    bool ReadPacket();
    bool ReadFile();
    std::vector<PacketPtr> ReadAudio();
    bool HasStreamsBeside() const;
    void KeepAudio(PacketPtr packet);
    void DropAudioBefore(const AVFrame& frame);
    void ReadTrailingAudio();
    std::vector<PacketPtr> TakeAudio(bool atEnd);
    void ReportDamage(const std::string& what);
    void ReportDamageUpTo(std::int64_t packet);
    double EndTime(const AVFrame& frame) const;

    std::string m_path, m_name;
    std::vector<std::string> m_files;  // of numbered pictures
    Options m_options;
    std::unique_ptr<StandardInput> m_standardInput;  // before the input, which reads from it
    std::unique_ptr<PictureReader> m_reader;         // in place of the decoder, where FFmpeg has none
    InputPtr m_input;
    AVStream* m_video = nullptr;
    std::unique_ptr<DamageLog> m_damage;
    CodecPtr m_decoder;
    Orientation m_orientation;
    FramePtr m_pending;
    std::deque<PacketPtr> m_audio;
    long long m_decoded = 0, m_packets = 0;
    std::int64_t m_lastTime = AV_NOPTS_VALUE, m_origin = AV_NOPTS_VALUE;
    std::int64_t m_readTime = AV_NOPTS_VALUE;    // at which the last packet is decoded
    std::int64_t m_passedTime = AV_NOPTS_VALUE;  // pictures before it are not wanted
    double m_endTime = 0;
    bool m_endsEarly = false;   // as its container says
    bool m_lacksTimes = false;  // as a packet showed
    bool m_inputEnded = false, m_finished = false, m_damageReported = false;
};

}  // namespace Nifikral
