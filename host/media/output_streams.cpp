#include "host/media/output_streams.h"

#include <string_view>

namespace Nifikral {

AVStream& AddStream(AVFormatContext& output, const AVCodecParameters& coding, AVRational timeBase) {
    AVStream* const stream = avformat_new_stream(&output, nullptr);
    if (!stream || avcodec_parameters_copy(stream->codecpar, &coding) < 0) throw std::bad_alloc();
    stream->codecpar->codec_tag = 0;
    stream->time_base = timeBase;
    return *stream;
}

bool Takes(const AVFormatContext& output, const AVCodecParameters* more, AVRational timeBase) {
    AVFormatContext* context = nullptr;
    avformat_alloc_output_context2(&context, output.oformat, nullptr, output.url);
    struct Free {
        void operator()(AVFormatContext* trial) const {
            std::uint8_t* written = nullptr;
            if (trial->pb) avio_close_dyn_buf(trial->pb, &written);
            av_free(written);
            avformat_free_context(trial);
        }
    };
    const auto trial = Require<std::unique_ptr<AVFormatContext, Free>>(context);
    for (unsigned i = 0; i < output.nb_streams; ++i) {
        const AVStream& has = *output.streams[i];
        AVStream& stream = AddStream(*trial, *has.codecpar, has.time_base);
        stream.codecpar->codec_tag = has.codecpar->codec_tag;
        stream.disposition = has.disposition;
        stream.avg_frame_rate = stream.r_frame_rate = has.avg_frame_rate;
        stream.sample_aspect_ratio = has.sample_aspect_ratio;
    }
    if (more) AddStream(*trial, *more, timeBase);
    return avio_open_dyn_buf(&trial->pb) >= 0 && avformat_write_header(trial.get(), nullptr) >= 0;
}

std::string StreamTitle(const AVStream& stream) {
    const AVDictionaryEntry* const language = av_dict_get(stream.metadata, "language", nullptr, 0);
    return avcodec_get_name(stream.codecpar->codec_id) +
           (language && std::string_view(language->value) != "und" ? std::string(" (") + language->value + ")" : "");
}

void AppendWord(std::string& list, const std::string& word) {
    if (list.find(word) == std::string::npos) list += (list.empty() ? "" : ", ") + word;
}

}  // namespace Nifikral
