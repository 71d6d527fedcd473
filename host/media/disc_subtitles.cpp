#include "host/media/disc_subtitles.h"

extern "C" {
#include <libavutil/opt.h>
}

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <string_view>

#include "host/base/errors.h"
#include "host/base/log.h"
#include "host/media/ffmpeg_log.h"
#include "host/media/output_streams.h"
#include "host/media/picture_fit.h"
#include "host/media/subtitle_file.h"

namespace Nifikral {
namespace {

// Share of the picture's height that players may hide at its rim.
constexpr double rim = 0.08;
// What is shown where nothing says how long, and as long as a disc can say.
constexpr std::int64_t textMilliseconds = 4000, mostMilliseconds = 600'000;
constexpr std::size_t mostBytes = 53'220;  // of one picture, in a player's memory

// Between these and less, a pixel of four colours is shown or not.
constexpr int visible = 0x60;

std::string PaletteText() {
    std::string text;
    char colour[8];
    for (const std::uint32_t entry : discPalette) {
        std::snprintf(colour, sizeof colour, "%06x,", unsigned(entry));
        text += colour;
    }
    text.pop_back();
    return text;
}

FramePtr Scaled(FramePtr picture, int width, int height) {
    if (picture->width == width && picture->height == height) return picture;
    const ScalerPtr scaler(sws_getContext(picture->width, picture->height, AV_PIX_FMT_BGRA, width, height,
                                          AV_PIX_FMT_BGRA, SWS_AREA, nullptr, nullptr, nullptr));
    if (!scaler) throw std::bad_alloc();
    FramePtr scaled = NewPicture(AV_PIX_FMT_BGRA, width, height);
    sws_scale(scaler.get(), picture->data, picture->linesize, 0, picture->height, scaled->data, scaled->linesize);
    return scaled;
}

bool LacksPalette(const AVCodecParameters& coding) {
    const std::string_view head(reinterpret_cast<const char*>(coding.extradata), std::size_t(coding.extradata_size));
    return coding.codec_id == AV_CODEC_ID_DVD_SUBTITLE && head.find("palette:") == std::string_view::npos;
}

// The decoder only guesses at colours that stand beside the film. What borders on the film is taken for the black rim
// of letters, and what there is most of within it for the white that fills them. A single colour stays as it is, white.
void SetReadableColours(const AVFrame& picture, const AVSubtitleRect& rect) {
    constexpr std::uint32_t black = 0x000000, white = 0xFFFFFF, grey = 0x808080, opaque = 0xFF000000;
    constexpr std::size_t colours = 4;
    const auto* const palette = reinterpret_cast<const std::uint32_t*>(rect.data[1]);
    const auto valueAt = [&](int x, int y) { return std::size_t(rect.data[0][y * rect.linesize[0] + x] % colours); };
    const auto isShown = [&](int x, int y) {
        return x >= 0 && x < rect.w && (palette[valueAt(x, y)] & opaque) >> 24 >= visible;
    };
    std::array<int, colours> pixels = {}, rims = {};
    for (int y = 0; y < rect.h; ++y)
        for (int x = 0; x < rect.w; ++x) {
            if (!isShown(x, y)) continue;
            ++pixels[valueAt(x, y)];
            rims[valueAt(x, y)] += !isShown(x - 1, y) || !isShown(x + 1, y);
        }
    if (std::count(pixels.begin(), pixels.end(), 0) > 2) return;
    const auto rim = std::max_element(rims.begin(), rims.end()) - rims.begin();
    pixels[std::size_t(rim)] = 0;
    const auto fill = std::max_element(pixels.begin(), pixels.end()) - pixels.begin();
    for (int y = 0; y < rect.h; ++y) {
        auto* const row = reinterpret_cast<std::uint32_t*>(picture.data[0] + y * picture.linesize[0]);
        for (int x = 0; x < rect.w; ++x) {
            const auto value = std::ptrdiff_t(valueAt(x, y));
            row[x] = (row[x] & opaque) | (value == rim ? black : value == fill ? white : grey);
        }
    }
}

// The text of an event, its tags left out: nine fields stand before it, joined by commas.
struct EventText {
    explicit EventText(const std::string& ass);

    std::string text;
    bool italic = false, atTop = false;
};

EventText::EventText(const std::string& ass) {
    std::size_t begin = 0;
    for (int field = 0; field < 8 && begin != std::string::npos; ++field) {
        begin = ass.find(',', begin);
        if (begin != std::string::npos) ++begin;
    }
    for (std::size_t i = begin == std::string::npos ? 0 : begin; i < ass.size(); ++i) {
        const std::size_t end = ass[i] == '{' ? ass.find('}', i) : std::string::npos;
        if (end != std::string::npos) {
            const std::string tags = ass.substr(i, end - i);
            italic = italic || tags.find("\\i1") != std::string::npos;
            for (const char* const top : {"\\an7", "\\an8", "\\an9"})
                atTop = atTop || tags.find(top) != std::string::npos;
            i = end;
        } else if (ass[i] == '\\' && i + 1 < ass.size() && (ass[i + 1] == 'N' || ass[i + 1] == 'n')) {
            text += '\n';
            ++i;
        } else if (ass[i] == '\\' && i + 1 < ass.size() && ass[i + 1] == 'h') {
            text += ' ';
            ++i;
        } else if (ass[i] != '\r') {
            text += ass[i];
        }
    }
    while (!text.empty() && text.back() == '\n') text.pop_back();
}

// The place of the nearest colour in the palette.
std::size_t Nearest(const std::uint8_t* bgra) {
    std::size_t nearest = 0;
    int least = std::numeric_limits<int>::max();
    for (std::size_t i = 0; i < discPalette.size(); ++i) {
        int distance = 0;
        for (int c = 0; c < 3; ++c) {
            const int off = int(discPalette[i] >> 8 * c & 255) - bgra[c];
            distance += off * off;
        }
        if (distance >= least) continue;
        least = distance;
        nearest = i;
    }
    return nearest;
}

}  // namespace

SubtitlePlace::SubtitlePlace(const OutputTraits& from, const OutputTraits& to)
    : width(to.source.width),
      height(to.source.height),
      squareWidth(int(std::lround(width * (to.pixelAspect.num > 0 ? av_q2d(to.pixelAspect) : 1)))),
      filmWidth(from.source.width),
      filmHeight(from.source.height) {
    const FilmPart part = PartOf(from, to);
    partWidth = part.width;
    partHeight = part.height;
}

bool DiscSubtitles::Takes(const AVCodecParameters& coding) {
    const AVCodecDescriptor* const descriptor = avcodec_descriptor_get(coding.codec_id);
    return descriptor && (descriptor->props & (AV_CODEC_PROP_TEXT_SUB | AV_CODEC_PROP_BITMAP_SUB)) &&
           avcodec_find_decoder(coding.codec_id);
}

DiscSubtitles::DiscSubtitles(const AVStream& from, const SubtitlePlace& place, PaintText paint)
    : m_name(StreamTitle(from)),
      m_place(place),
      m_paint(std::move(paint)),
      m_timeBase(from.time_base),
      m_lacksPalette(LacksPalette(*from.codecpar)),
      m_decoder(Require<CodecPtr>(avcodec_alloc_context3(nullptr))),
      m_encoder(Require<CodecPtr>(avcodec_alloc_context3(nullptr))) {
    const FfmpegListener listener;
    if (avcodec_parameters_to_context(m_decoder.get(), from.codecpar) < 0) throw std::bad_alloc();
    m_decoder->pkt_timebase = from.time_base;
    if (avcodec_open2(m_decoder.get(), avcodec_find_decoder(from.codecpar->codec_id), nullptr) < 0)
        throw HostError(ExitCode::Input, "the subtitles " + m_name + " have a damaged head; take them out of the film");
    const AVCodec* const encoder = avcodec_find_encoder(AV_CODEC_ID_DVD_SUBTITLE);
    m_encoder->width = place.width;
    m_encoder->height = place.height;
    m_encoder->time_base = {1, 1000};
    AVDictionary* options = nullptr;
    av_dict_set(&options, "palette", PaletteText().c_str(), 0);
    av_dict_set(&options, "even_rows_fix", "1", 0);
    const int error = encoder ? avcodec_open2(m_encoder.get(), encoder, &options) : AVERROR_ENCODER_NOT_FOUND;
    av_dict_free(&options);
    if (error < 0)
        throw HostError(ExitCode::Failed, "there is no encoder for the subtitles of discs (" + ErrorText(error) +
                                              "); install another FFmpeg");
}

void DiscSubtitles::LeaveOut() const {
    PrintWarningOnce("subtitles " + m_name, "some of the subtitles " + m_name +
                                                " cannot be shown and are left out; check the film's subtitles");
}

void DiscSubtitles::Convert(AVPacket& packet, const Store& store) {
    AVSubtitle subtitle = {};
    const std::unique_ptr<AVSubtitle, void (*)(AVSubtitle*)> owner(&subtitle, avsubtitle_free);
    int got = 0;
    const FfmpegListener listener;
    MakeUtf8(m_decoder->codec_id, m_name, packet);
    if (avcodec_decode_subtitle2(m_decoder.get(), &subtitle, &got, &packet) < 0) return LeaveOut();
    if (!got || packet.pts == AV_NOPTS_VALUE) return;
    std::int64_t milliseconds = av_rescale_q(packet.duration, m_timeBase, {1, 1000});
    const bool endless = subtitle.end_display_time == std::numeric_limits<std::uint32_t>::max();
    if (!endless && subtitle.end_display_time > subtitle.start_display_time)
        milliseconds = subtitle.end_display_time - subtitle.start_display_time;
    std::vector<Piece> pieces;
    try {
        pieces = Pieces(subtitle);
    } catch (const std::runtime_error&) {
        return LeaveOut();
    }
    if (pieces.empty()) {
        // What stays until the next picture ends with one of which nothing is seen.
        if (!m_endless) return;
        FramePtr nothing = NewPicture(AV_PIX_FMT_BGRA, 2, 2);
        for (int y = 0; y < 2; ++y) std::fill_n(nothing->data[0] + y * nothing->linesize[0], 8, std::uint8_t(0));
        pieces.push_back({std::move(nothing), 0, 0});
        milliseconds = 100;
    } else if (milliseconds <= 0) {
        milliseconds = endless ? mostMilliseconds : textMilliseconds;
    }
    m_endless = endless && subtitle.num_rects > 0;
    packet.pts =
        std::max<std::int64_t>(0, packet.pts + av_rescale_q(subtitle.start_display_time, {1, 1000}, m_timeBase));
    Encode(pieces, packet, std::min(milliseconds, mostMilliseconds), store);
}

std::vector<DiscSubtitles::Piece> DiscSubtitles::Pieces(const AVSubtitle& subtitle) const {
    std::vector<Piece> pieces;
    std::string text;
    for (unsigned i = 0; i < subtitle.num_rects; ++i) {
        const AVSubtitleRect& rect = *subtitle.rects[i];
        if (rect.type == SUBTITLE_BITMAP && rect.w > 0 && rect.h > 0 && rect.data[0])
            pieces.push_back(OfPicture(rect));
        else if (rect.type == SUBTITLE_ASS && rect.ass)
            pieces.push_back(OfText(rect.ass));
    }
    std::erase_if(pieces, [](const Piece& piece) { return !piece.picture; });
    return pieces;
}

DiscSubtitles::Piece DiscSubtitles::OfText(const std::string& ass) const {
    const EventText event(ass);
    if (event.text.find_first_not_of(" \t\n") == std::string::npos) return {nullptr, 0, 0};
    FramePtr picture = m_paint(event.text, event.italic, m_place.squareWidth, m_place.height);
    const int width =
        std::clamp(int(std::lround(double(picture->width) * m_place.width / m_place.squareWidth)), 1, m_place.width);
    const int height = std::min(picture->height, m_place.height);
    const int free = m_place.height - height, margin = std::min(free, int(m_place.height * rim));
    return {Scaled(std::move(picture), width, height), (m_place.width - width) / 2,
            event.atTop ? margin : free - margin};
}

DiscSubtitles::Piece DiscSubtitles::OfPicture(const AVSubtitleRect& rect) const {
    FramePtr picture = NewPicture(AV_PIX_FMT_BGRA, rect.w, rect.h);
    const auto* const palette = reinterpret_cast<const std::uint32_t*>(rect.data[1]);
    for (int y = 0; y < rect.h; ++y) {
        auto* const row = reinterpret_cast<std::uint32_t*>(picture->data[0] + y * picture->linesize[0]);
        for (int x = 0; x < rect.w; ++x) row[x] = palette[rect.data[0][y * rect.linesize[0] + x]];
    }
    if (m_lacksPalette) SetReadableColours(*picture, rect);
    // They are made for a picture of which the film may be the middle rows.
    const int fullWidth = m_decoder->width > 0 ? m_decoder->width : m_place.filmWidth;
    const int fullHeight = m_decoder->height > 0 ? m_decoder->height : m_place.filmHeight;
    const int filmRows = fullWidth == m_place.filmWidth ? m_place.filmHeight : fullHeight;
    const double across = double(m_place.partWidth) / fullWidth, down = double(m_place.partHeight) / filmRows;
    const int width = std::clamp(int(std::lround(rect.w * across)), 1, m_place.width);
    const int height = std::clamp(int(std::lround(rect.h * down)), 1, m_place.height);
    const auto place = [](double at, int size, int room) { return std::clamp(int(std::lround(at)), 0, room - size); };
    return {Scaled(std::move(picture), width, height),
            place((m_place.width - fullWidth * across) / 2 + rect.x * across, width, m_place.width),
            place((m_place.height - fullHeight * down) / 2 + rect.y * down, height, m_place.height)};
}

void DiscSubtitles::Encode(const std::vector<Piece>& pieces, const AVPacket& packet, std::int64_t milliseconds,
                           const Store& store) const {
    int left = m_place.width, top = m_place.height, right = 0, bottom = 0;
    for (const auto& [picture, x, y] : pieces) {
        left = std::min(left, x);
        top = std::min(top, y & ~1);
        right = std::max(right, x + picture->width);
        bottom = std::max(bottom, y + picture->height);
    }
    const int width = right - left, height = bottom - top;
    std::vector<std::uint8_t> pixels(std::size_t(width) * std::size_t(height));
    std::array<std::uint32_t, AVPALETTE_COUNT> palette = {};
    for (std::size_t i = 0; i < discPalette.size(); ++i) palette[i + 1] = 0xFF000000 | discPalette[i];
    for (const auto& [picture, x, y] : pieces)
        for (int row = 0; row < picture->height; ++row) {
            const std::uint8_t* from = picture->data[0] + row * picture->linesize[0];
            std::uint8_t* to = pixels.data() + std::size_t(y - top + row) * std::size_t(width) + (x - left);
            for (int column = 0; column < picture->width; ++column, from += 4, ++to)
                if (from[3] >= visible) *to = std::uint8_t(Nearest(from) + 1);
        }
    AVSubtitleRect rect = {};
    rect.type = SUBTITLE_BITMAP;
    rect.x = left;
    rect.y = top;
    rect.w = width;
    rect.h = height;
    rect.nb_colors = int(discPalette.size()) + 1;
    rect.data[0] = pixels.data();
    rect.data[1] = reinterpret_cast<std::uint8_t*>(palette.data());
    rect.linesize[0] = width;
    AVSubtitleRect* rects[] = {&rect};
    AVSubtitle whole = {};
    whole.num_rects = 1;
    whole.rects = rects;
    whole.end_display_time = std::uint32_t(milliseconds);
    std::vector<std::uint8_t> coded(1 << 16);
    const FfmpegListener listener;
    const int size = avcodec_encode_subtitle(m_encoder.get(), coded.data(), int(coded.size()), &whole);
    if (size <= 0 || std::size_t(size) > mostBytes) return LeaveOut();
    const PacketPtr made = NewPacket();
    if (av_new_packet(made.get(), size) < 0) throw std::bad_alloc();
    std::copy_n(coded.begin(), size, made->data);
    made->pts = made->dts = packet.pts;
    made->duration = av_rescale_q(milliseconds, {1, 1000}, m_timeBase);
    store(*made);
}

}  // namespace Nifikral
