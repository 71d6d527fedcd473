#include "host/media/sound_encoder.h"

#include <algorithm>
#include <cmath>

#include "host/base/errors.h"

namespace Nifikral {
namespace {

FramePtr NewSamples(const AVCodecContext& context, int count) {
    FramePtr frame = NewFrame();
    frame->nb_samples = count;
    frame->format = context.sample_fmt;
    frame->sample_rate = context.sample_rate;
    frame->ch_layout = context.ch_layout;
    if (av_frame_get_buffer(frame.get(), 0) < 0) throw std::bad_alloc();
    return frame;
}

}  // namespace

std::unique_ptr<SoundEncoder> SoundEncoder::Start(const AVCodec& codec, const SoundForm& form, int bitRate) {
    std::unique_ptr<SoundEncoder> encoder(new SoundEncoder);
    encoder->m_context = Require<CodecPtr>(avcodec_alloc_context3(&codec));
    AVCodecContext& context = *encoder->m_context;
    context.sample_fmt = form.format;
    context.sample_rate = form.rate;
    context.ch_layout = form.layout;
    context.time_base = {1, form.rate};
    context.bit_rate = bitRate;
    context.flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    if (avcodec_open2(&context, &codec, nullptr) < 0) return nullptr;
    encoder->m_samples =
        Require<decltype(m_samples)>(av_audio_fifo_alloc(form.format, form.layout.nb_channels, form.rate));
    return encoder;
}

void SoundEncoder::Put(const AVFrame* frame, const Store& store) {
    if (!frame) {
        Encode(true, store);
        return Send(nullptr, store);
    }
    // Containers round times; only where sound begins, these are to the sample.
    const std::int64_t gap = frame->pts - m_taken, tolerance = m_taken > 0 ? m_context->sample_rate / 10 : 0;
    if (gap > tolerance) FillGap(gap, store);
    Keep(*frame, gap < -tolerance ? int(std::min<std::int64_t>(-gap, frame->nb_samples)) : 0);
    Encode(false, store);
}

void SoundEncoder::PutSilence(double until, const Store& store) {
    FillGap(std::llround(until * m_context->sample_rate) - m_taken, store);
    Encode(false, store);
}

void SoundEncoder::Keep(const AVFrame& frame, int skipped) {
    const auto format = AVSampleFormat(frame.format);
    const int channels = frame.ch_layout.nb_channels;
    const bool planar = av_sample_fmt_is_planar(format);
    const int step = av_get_bytes_per_sample(format) * (planar ? 1 : channels);
    void* planes[AV_NUM_DATA_POINTERS * 8] = {};
    for (int p = 0; p < (planar ? channels : 1); ++p) planes[p] = frame.extended_data[p] + skipped * step;
    if (av_audio_fifo_write(m_samples.get(), planes, frame.nb_samples - skipped) < 0) throw std::bad_alloc();
    m_taken += frame.nb_samples - skipped;
}

void SoundEncoder::FillGap(std::int64_t samples, const Store& store) {
    while (samples > 0) {
        const FramePtr silence = NewSamples(*m_context, int(std::min<std::int64_t>(samples, m_context->sample_rate)));
        av_samples_set_silence(silence->extended_data, 0, silence->nb_samples, silence->ch_layout.nb_channels,
                               m_context->sample_fmt);
        Keep(*silence, 0);
        Encode(false, store);
        samples -= silence->nb_samples;
    }
}

void SoundEncoder::Encode(bool rest, const Store& store) {
    const int held = av_audio_fifo_size(m_samples.get());
    const int step = m_context->frame_size > 0 ? m_context->frame_size : std::max(1, std::min(held, 4096));
    for (int left = held; left >= step || (rest && left > 0); left -= step) {
        const FramePtr frame = NewSamples(*m_context, std::min(left, step));
        void** const planes = reinterpret_cast<void**>(frame->extended_data);
        if (av_audio_fifo_read(m_samples.get(), planes, frame->nb_samples) < 0) throw std::bad_alloc();
        frame->pts = m_sent;
        m_sent += frame->nb_samples;
        Send(frame.get(), store);
    }
}

void SoundEncoder::Send(const AVFrame* frame, const Store& store) {
    int error = avcodec_send_frame(m_context.get(), frame);
    const PacketPtr packet = NewPacket();
    while (error >= 0) {
        error = avcodec_receive_packet(m_context.get(), packet.get());
        if (error == AVERROR(EAGAIN) || error == AVERROR_EOF) return;
        if (error >= 0) store(*packet);
    }
    throw HostError(ExitCode::Failed, std::string("the sound's encoder ") + m_context->codec->name + " fails (" +
                                          ErrorText(error) + "); choose another with --audio-encoder");
}

}  // namespace Nifikral
