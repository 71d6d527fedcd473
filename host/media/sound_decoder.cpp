#include "host/media/sound_decoder.h"

#include <sstream>
#include <utility>

#include "host/base/errors.h"

namespace Nifikral {
namespace {

std::string Text(const AVChannelLayout& layout) {
    char text[256] = "";
    av_channel_layout_describe(&layout, text, sizeof text);
    return text;
}

// What is converted grows as this is low.
void RequireRate(int rate, const std::string& name) {
    constexpr int lowest = 1000, highest = 1'000'000;
    if (rate < lowest || rate > highest)
        throw HostError(ExitCode::Input,
                        name + ": its sound has " + std::to_string(rate) + " samples a second; convert it first");
}

}  // namespace

AVChannelLayout UsualLayout(int channels) {
    AVChannelLayout layout = {};
    av_channel_layout_default(&layout, channels);
    if (layout.order != AV_CHANNEL_ORDER_NATIVE) av_channel_layout_default(&layout, 2);
    return layout;
}

AVChannelLayout NamedLayout(const AVChannelLayout& layout) {
    return layout.order == AV_CHANNEL_ORDER_NATIVE ? layout : UsualLayout(layout.nb_channels);
}

SoundDecoder::SoundDecoder(const AVStream& stream, const SoundForm& form, std::string name, std::string filters,
                           bool fromZero)
    : m_name(std::move(name)),
      m_filters(std::move(filters)),
      m_form(form),
      m_timeBase(stream.time_base),
      m_fromZero(fromZero) {
    const AVCodec* const codec = avcodec_find_decoder(stream.codecpar->codec_id);
    m_decoder = Require<CodecPtr>(avcodec_alloc_context3(codec));
    m_decoder->pkt_timebase = stream.time_base;
    int error = codec ? avcodec_parameters_to_context(m_decoder.get(), stream.codecpar) : AVERROR_DECODER_NOT_FOUND;
    if (error >= 0) error = avcodec_open2(m_decoder.get(), codec, nullptr);
    if (error < 0)
        throw HostError(ExitCode::Input,
                        m_name + ": its sound cannot be read (" + ErrorText(error) + "); convert it first");
}

void SoundDecoder::Put(const AVPacket* packet, const Take& take) {
    avcodec_send_packet(m_decoder.get(), packet);
    for (;;) {
        FramePtr frame = NewFrame();
        if (avcodec_receive_frame(m_decoder.get(), frame.get()) < 0) break;
        Filter(std::move(frame), take);
    }
    if (packet || !m_graph) return;
    m_graph->End(m_end);
    Drain(take);
}

void SoundDecoder::Filter(FramePtr frame, const Take& take) {
    RequireRate(frame->sample_rate, m_name);
    std::int64_t begin = frame->best_effort_timestamp == AV_NOPTS_VALUE ? m_next : frame->best_effort_timestamp;
    if (m_fromZero && !m_origin) m_origin = begin;
    frame->pts = begin - m_origin.value_or(0);
    m_next = begin + av_rescale_q(frame->nb_samples, {1, frame->sample_rate}, m_timeBase);
    std::ostringstream source;
    source << "time_base=" << m_timeBase.num << "/" << m_timeBase.den << ":sample_rate=" << frame->sample_rate
           << ":sample_fmt=" << frame->format << ":channel_layout=" << Text(NamedLayout(frame->ch_layout));
    if (source.str() != m_source) {
        if (m_graph) {
            m_graph->End(m_end);
            Drain(take);
        }
        m_source = source.str();
        std::ostringstream filters;
        filters << "aresample=" << m_form.rate << ",aformat=channel_layouts=" << Text(m_form.layout)
                << ":sample_fmts=" << av_get_sample_fmt_name(m_form.format) << (m_filters.empty() ? "" : ",")
                << m_filters;
        m_graph.emplace(AVMEDIA_TYPE_AUDIO, m_source, filters.str(), m_name + ": its sound cannot be converted");
    }
    if (frame->ch_layout.order != AV_CHANNEL_ORDER_NATIVE) frame->ch_layout = NamedLayout(frame->ch_layout);
    m_end = m_next - m_origin.value_or(0);
    m_graph->Put(*frame);
    Drain(take);
}

void SoundDecoder::Drain(const Take& take) {
    while (const FramePtr frame = m_graph->Take()) take(*frame);
}

}  // namespace Nifikral
