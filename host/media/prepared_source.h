#pragma once

#include <functional>

#include "host/media/media_sink.h"
#include "host/media/media_source.h"
#include "host/media/reshape.h"

namespace Nifikral {

/// An input whose pictures are cropped, scaled and brought to a frame rate before anything else is done to them. All
/// that is said of it, and all ranges, are of what comes out. Each picture goes through a copy of Reshape() once more,
/// on whatever thread. Throws input and usage errors. Threads: one at a time.
class PreparedSource {
 public:
    /// `evenSides`: sides that follow from others are to be even.
    PreparedSource(const std::string& path, const MediaSource::Options& options, const Preparation& preparation,
                   bool evenSides);

    /// As MediaSource has them.
    std::optional<SourceStep> Next();
    std::vector<PacketPtr> AudioUntil(double seconds);
    std::vector<const AVStream*> AudioStreams() const { return m_source.AudioStreams(); }
    AVRational FrameRate() const { return m_rate.num > 0 ? m_rate : m_source.FrameRate(); }
    long long EstimatedFrameCount() const;
    long long CountFrames(const FrameRange& range) const;

    const Reshaper& Reshape() const { return m_reshape; }
    PictureShape Shape() const { return m_shape; }
    /// The traits of an output; streams are borrowed.
    OutputTraits Traits(AVPixelFormat preferred) const;

 private:
    FramePtr PullSource();
    FramePtr PullFrame();
    double Seconds(long long number) const;
    std::vector<PacketPtr> TakeAudio();

    std::string m_path;
    MediaSource::Options m_options;
    Preparation m_preparation;
    AVRational m_rate;  // 0/1: the input's own
    MediaSource m_source;
    Reshaper m_reshape;
    PictureShape m_shape;
    std::optional<FilterGraph> m_timing;
    std::vector<PacketPtr> m_audio;
    std::int64_t m_begin = AV_NOPTS_VALUE;  // the time of the first frame, in frames
    std::int64_t m_sourceEnd = 0;
    long long m_number = 0;
    bool m_sourceEnded = false, m_finished = false;
};

}  // namespace Nifikral
