#pragma once

#include <functional>
#include <optional>
#include <string>

extern "C" {
#include <libavutil/channel_layout.h>
}

#include "host/media/filter_graph.h"

namespace Nifikral {

/// The usual layout of so many channels; stereo where there is none.
AVChannelLayout UsualLayout(int channels);
/// A layout as it is, or the usual one for its number of channels where its order has no name.
AVChannelLayout NamedLayout(const AVChannelLayout& layout);

struct SoundForm {
    int rate = 48000;
    AVSampleFormat format = AV_SAMPLE_FMT_FLT;
    AVChannelLayout layout = UsualLayout(2);  ///< a native one, which owns nothing
};

/// Decodes a stream of sound and brings it into one form, even where its own changes on the way. Damaged pieces are
/// passed over, as players do. Threads: one at a time.
class SoundDecoder {
 public:
    /// `filters`: a chain behind the conversion, or empty. `fromZero`: times count from the first sample there is.
    /// Throws input errors whose line begins with `name`.
    SoundDecoder(const AVStream& stream, const SoundForm& form, std::string name, std::string filters = {},
                 bool fromZero = false);

    using Take = std::function<void(AVFrame&)>;
    /// Null: nothing comes behind. `take` gets each frame that is ready; its time is in samples.
    void Put(const AVPacket* packet, const Take& take);
    /// Whether there was anything that could be decoded so far.
    bool HasDecoded() const { return m_graph.has_value(); }

 private:
    void Filter(FramePtr frame, const Take& take);
    void Drain(const Take& take);

    std::string m_name, m_filters;
    SoundForm m_form;
    AVRational m_timeBase;
    CodecPtr m_decoder;
    std::string m_source;  // what the graph was made for
    std::optional<FilterGraph> m_graph;
    bool m_fromZero;
    std::int64_t m_next = 0;  // where the next frame begins that does not say so itself
    std::int64_t m_end = 0;   // of the last one in the graph
    std::optional<std::int64_t> m_origin;
};

}  // namespace Nifikral
