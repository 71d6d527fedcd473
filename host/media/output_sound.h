#pragma once

#include <limits>
#include <string>
#include <vector>

#include "host/media/media_sink.h"
#include "host/media/sound_encoder.h"

namespace Nifikral {

/// Bits a second that sound takes on a video DVD, where it is copied or coded as the streams below are.
int DvdBitRate(const AVCodecParameters& sound);

/// The streams of sound of a film. Each is copied where the container takes it, else decoded and encoded. Threads: one
/// at a time.
class OutputSound {
 public:
    /// Adds streams behind the video's, and prints one line where something is otherwise than in the input. `name`
    /// is the output's. Throws when what is asked for explicitly cannot be had.
    OutputSound(AVFormatContext& output, const std::string& name, const OutputOptions& options,
                const OutputTraits& traits);

    /// "sound: aac, copied", or "" where there is none.
    const std::string& Description() const { return m_description; }

    using Store = std::function<void(AVPacket&)>;
    /// A packet of any stream of the input. `store` gets those of the output.
    void Write(PacketPtr packet, const Store& store);
    /// The pictures have come so far; a silent track goes as far.
    void Reach(double seconds, const Store& store) const;
    void Finish(const Store& store);

 private:
    struct Stream {
        int from;
        AVRational timeBase;  // of what is stored
        AVStream* to;
        std::unique_ptr<SoundDecoder> decoder;  // none where it is copied or silent
        std::unique_ptr<SoundEncoder> encoder;
        std::int64_t last = std::numeric_limits<std::int64_t>::min();  // time of what was copied
    };
    static constexpr int silent = -1;  // in place of the stream that it comes from
    void AddSilence(AVFormatContext& output, const AVCodec& encoder, bool dvd);
    static void Send(const Stream& stream, AVPacket& packet, const Store& store);
    static void Encode(const Stream& stream, const AVPacket* packet, const Store& store);

    std::vector<Stream> m_streams;
    std::string m_description;
};

}  // namespace Nifikral
