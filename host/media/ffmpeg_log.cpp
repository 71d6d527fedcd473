#include "host/media/ffmpeg_log.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/log.h>
}

#include <algorithm>
#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <initializer_list>
#include <new>

#include "host/base/log.h"

namespace Nifikral {
namespace {

std::atomic<bool> captures = false;
thread_local FfmpegListener* listener = nullptr;

bool HoldsAny(const std::string& text, std::initializer_list<const char*> phrases) {
    return std::any_of(phrases.begin(), phrases.end(),
                       [&](const char* phrase) { return text.find(phrase) != std::string::npos; });
}

bool IsA(const void* object, const AVClass* kind) {
    return object && *static_cast<const AVClass* const*>(object) == kind;
}

void Take(void* object, int level, const char* format, va_list arguments) {
    char line[512];
    int prefix = 0;
    av_log_format_line2(object, level, format, arguments, line, sizeof line, &prefix);
    std::string text = line;
    while (!text.empty() && (text.back() == '\n' || text.back() == '.')) text.pop_back();
    if (text.empty()) return;
    // Frame threads work on copies of the decoder's context, which keep what is attached to it.
    if (IsA(object, avcodec_get_class()))
        if (const auto& decoder = *static_cast<const AVCodecContext*>(object); decoder.opaque)
            static_cast<DamageLog*>(decoder.opaque)->Hear(decoder, text);
    if (level > AV_LOG_WARNING) return;
    if (listener) listener->Hear(text, level <= AV_LOG_ERROR, IsA(object, avformat_get_class()));
    PrintDetail("ffmpeg: " + text);
}

void Capture(void* object, int level, const char* format, va_list arguments) {
    if (level > AV_LOG_INFO) return;
    try {
        Take(object, level, format, arguments);
    } catch (const std::bad_alloc&) {
        // A message is lost: exceptions do not pass through C.
    }
}

}  // namespace

void CaptureFfmpegMessages() {
    captures = true;
    av_log_set_callback(Capture);
}

bool CapturesFfmpegMessages() { return captures; }

FfmpegListener::FfmpegListener() : m_outer(listener) { listener = this; }
FfmpegListener::~FfmpegListener() { listener = m_outer; }

void FfmpegListener::Hear(const std::string& text, bool isError, bool isOfContainer) {
    if (isOfContainer && HoldsAny(text, {"prematurely", "truncated", "partial file"})) m_endedEarly = true;
    if (isError) m_complaint = text;
    char size[32] = "";
    if (std::sscanf(text.c_str(), "Picture size %31s is invalid", size) == 1) m_sizeRefused = size;
}

void DamageLog::Attach(AVCodecContext& decoder) { decoder.opaque = this; }

void DamageLog::Add(std::int64_t packet, const std::string& what) {
    const std::lock_guard lock(m_mutex);
    if (packet >= m_packet) return;
    m_packet = packet;
    m_what = what;
}

std::string DamageLog::UpTo(std::int64_t packet) const {
    const std::lock_guard lock(m_mutex);
    return m_packet <= packet ? m_what : "";
}

void DamageLog::Hear(const AVCodecContext& decoder, const std::string& text) {
    // Only what decoders say where they make samples up: other errors, in headers above all, harm no picture.
    if (HoldsAny(text, {"concealing ", "error while decoding", "CRC mismatch", "End mismatch", "LZW decode failed"}))
        Add(decoder.reordered_opaque, text);
}

}  // namespace Nifikral
