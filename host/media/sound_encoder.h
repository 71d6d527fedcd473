#pragma once

#include <functional>
#include <memory>

extern "C" {
#include <libavutil/audio_fifo.h>
}

#include "host/media/sound_decoder.h"

namespace Nifikral {

/// A started encoder for sound. Threads: one at a time.
class SoundEncoder {
 public:
    /// Null where the encoder does not take this form or rate; FFmpeg says why. `bitRate` 0: the usual
    /// one for so many channels.
    static std::unique_ptr<SoundEncoder> Start(const AVCodec& codec, const SoundForm& form, int bitRate);

    const AVCodecContext& Context() const { return *m_context; }
    using Store = std::function<void(AVPacket&)>;
    /// Silence up to a time in seconds, where nothing has come so far.
    void PutSilence(double until, const Store& store);
    /// Null: nothing comes behind. Frames come in the encoder's form with their times in samples: gaps between them
    /// become silence, and what overlaps is left out. `store` gets each packet; its times are in samples too.
    void Put(const AVFrame* frame, const Store& store);

 private:
    struct Free {
        void operator()(AVAudioFifo* samples) const { av_audio_fifo_free(samples); }
    };
    SoundEncoder() = default;
    void Keep(const AVFrame& frame, int skipped);
    void FillGap(std::int64_t samples, const Store& store);
    void Encode(bool rest, const Store& store);
    void Send(const AVFrame* frame, const Store& store);

    CodecPtr m_context;
    std::unique_ptr<AVAudioFifo, Free> m_samples;
    std::int64_t m_taken = 0, m_sent = 0;  // samples since 0
};

}  // namespace Nifikral
