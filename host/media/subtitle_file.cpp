#include "host/media/subtitle_file.h"

#include <iconv.h>

extern "C" {
#include <libavutil/avstring.h>
}

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <filesystem>

#include "host/base/errors.h"
#include "host/base/language_code.h"
#include "host/base/log.h"
#include "host/media/ffmpeg_log.h"

namespace Nifikral {
namespace {

constexpr std::string_view extensions[] = {".srt", ".vtt", ".ass", ".ssa", ".sup"};

bool IsUtf8(const AVPacket& packet) {
    const std::uint8_t *at = packet.data, *const end = at + packet.size;
    std::int32_t character = 0;
    while (at < end)
        if (av_utf8_decode(&character, &at, end, 0) < 0) return false;
    return true;
}

// Some formats have numbers before their text.
bool IsPlainText(AVCodecID codec) {
    return codec == AV_CODEC_ID_SUBRIP || codec == AV_CODEC_ID_ASS || codec == AV_CODEC_ID_WEBVTT ||
           codec == AV_CODEC_ID_TEXT;
}

}  // namespace

bool IsSubtitleName(const std::string& path) {
    std::string extension = std::filesystem::path(path).extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return std::tolower(c); });
    return std::find(std::begin(extensions), std::end(extensions), extension) != std::end(extensions);
}

std::string LanguageOfName(const std::string& path) {
    // Other words may stand there too, such as "forced".
    for (std::filesystem::path name = std::filesystem::path(path).stem(); name.has_extension(); name = name.stem())
        if (std::string code = LanguageCode(name.extension().string().substr(1)); !code.empty()) return code;
    return {};
}

SubtitleFile::SubtitleFile(const std::string& path) {
    CheckLocalFile(path);
    try {
        const FfmpegListener listener;
        m_input = OpenInput(path, nullptr, nullptr, listener);
    } catch (const HostError&) {
        // What follows says what is wanted.
    }
    const int index = m_input ? av_find_best_stream(m_input.get(), AVMEDIA_TYPE_SUBTITLE, -1, -1, nullptr, 0) : -1;
    if (index < 0 || !avcodec_find_decoder(m_input->streams[index]->codecpar->codec_id))
        throw HostError(ExitCode::Input, path + " holds no subtitles that can be read; save it as .srt or .vtt");
    m_stream = m_input->streams[index];
    if (const std::string language = LanguageOfName(path); !language.empty())
        av_dict_set(&m_stream->metadata, "language", language.c_str(), 0);
}

PacketPtr SubtitleFile::Next() const {
    for (;;) {
        PacketPtr packet = NewPacket();
        if (av_read_frame(m_input.get(), packet.get()) < 0) return nullptr;
        if (packet->stream_index == m_stream->index && packet->pts != AV_NOPTS_VALUE) return packet;
    }
}

void MakeUtf8(AVCodecID codec, const std::string& name, AVPacket& packet) {
    if (!IsPlainText(codec) || IsUtf8(packet)) return;
    PrintWarningOnce("text of " + name,
                     "the subtitles " + name +
                         " are no UTF-8; they are read as Windows-1252: where letters are wrong, save them as UTF-8");
    const iconv_t conversion = iconv_open("UTF-8//IGNORE", "WINDOWS-1252");
    if (reinterpret_cast<std::intptr_t>(conversion) == -1) return;
    constexpr int longest = 3;  // bytes of a character
    const PacketPtr text = NewPacket();
    if (av_new_packet(text.get(), packet.size * longest) < 0) throw std::bad_alloc();
    char *from = reinterpret_cast<char*>(packet.data), *to = reinterpret_cast<char*>(text->data);
    std::size_t left = std::size_t(packet.size), room = std::size_t(text->size);
    iconv(conversion, &from, &left, &to, &room);
    iconv_close(conversion);
    av_shrink_packet(text.get(), text->size - int(room));
    if (av_packet_copy_props(text.get(), &packet) < 0) throw std::bad_alloc();
    av_packet_unref(&packet);
    av_packet_move_ref(&packet, text.get());
}

}  // namespace Nifikral
