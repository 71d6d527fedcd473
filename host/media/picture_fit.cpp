#include "host/media/picture_fit.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <cmath>
#include <limits>
#include <sstream>

#include "host/media/film_profile.h"

namespace Nifikral {
namespace {

constexpr char wholePictures[] = "bwdif=mode=send_frame:deint=interlaced";

bool IsSame(AVRational a, AVRational b) { return av_cmp_q(a, b) == 0; }

double ShownAspect(const OutputTraits& traits) {
    const double pixel = traits.pixelAspect.num > 0 && traits.pixelAspect.den > 0 ? av_q2d(traits.pixelAspect) : 1;
    return pixel * traits.source.width / traits.source.height;
}

std::string ProfileFilters(const OutputTraits& from, const OutputTraits& to) {
    const PictureShape &has = from.source, &wanted = to.source;
    const FilmPart part = PartOf(from, to);
    std::ostringstream filters;
    if (from.fieldOrder != to.fieldOrder) filters << wholePictures << ",";
    if (part.width != has.width || part.height != has.height)
        filters << "scale=" << part.width << ":" << part.height << ":flags=bicubic,";
    if (part.width != wanted.width || part.height != wanted.height)
        filters << "pad=" << wanted.width << ":" << wanted.height << ":-1:-1,";
    filters << "fps=" << to.frameRate.num << "/" << to.frameRate.den << ",setsar=" << to.pixelAspect.num << "/"
            << to.pixelAspect.den;
    return filters.str();
}

std::string Filters(const OutputTraits& from, const OutputTraits& to) {
    if (from.profile) return ProfileFilters(from, to);
    std::vector<std::string> filters;
    const auto ratio = [](AVRational value) { return std::to_string(value.num) + "/" + std::to_string(value.den); };
    // It counts time in halves.
    if (from.fieldOrder != to.fieldOrder) filters.push_back(wholePictures + (",settb=" + ratio(from.timeBase)));
    if (from.source.width != to.source.width || from.source.height != to.source.height)
        filters.push_back("crop=" + std::to_string(to.source.width) + ":" + std::to_string(to.source.height) + ":0:0");
    if (!IsSame(from.frameRate, to.frameRate)) filters.push_back("fps=" + ratio(to.frameRate));
    std::string chain;
    for (const std::string& filter : filters) chain += (chain.empty() ? "" : ",") + filter;
    return chain;
}

void UseProfile(OutputTraits& traits) {
    const FilmProfile& profile = *traits.profile;
    const OutputTraits film = TraitsOfFilm(profile.width, profile.height, profile.frameRate, traits.preferred);
    OutputTraits stored = traits;
    stored.source = film.source;
    stored.range = film.range;
    stored.pixelAspect = profile.PixelAspect();
    stored.frameRate = film.frameRate;
    stored.timeBase = film.timeBase;
    if (stored.primaries == AVCOL_PRI_UNSPECIFIED) stored.primaries = film.primaries;
    if (stored.transfer == AVCOL_TRC_UNSPECIFIED) stored.transfer = film.transfer;
    const bool sameRows = PartOf(traits, stored).height == traits.source.height;
    if (!sameRows || !IsSame(traits.frameRate, profile.frameRate)) stored.fieldOrder = AV_FIELD_PROGRESSIVE;
    traits = stored;
}

// The codec's nearest rate, but rather one that repeats every picture as often as the others.
AVRational KnownRate(const AVCodec& codec, AVRational wanted) {
    constexpr double slowest = 23;  // what is listed below is not of the standards
    AVRational nearest = wanted;
    double distance = std::numeric_limits<double>::infinity();
    for (const AVRational* rate = codec.supported_framerates; rate && rate->num; ++rate) {
        const double times = av_q2d(*rate) / av_q2d(wanted), off = std::abs(times - std::round(times));
        const double worse = times > 0.9 && off < 1e-4 ? times / 1e6 : std::abs(std::log(times));
        if (av_q2d(*rate) < slowest || worse >= distance) continue;
        distance = worse;
        nearest = *rate;
    }
    return nearest;
}

}  // namespace

FilmPart PartOf(const OutputTraits& from, const OutputTraits& to) {
    // Nearly the same shape is the same: 704 columns are meant to be seen as 720.
    constexpr double nearly = 0.03;
    const double wider = ShownAspect(from) / ShownAspect(to);
    FilmPart part{to.source.width, to.source.height};
    const auto even = [](double length) { return std::max(2, 2 * int(std::lround(length / 2))); };
    if (wider > 1 + nearly) part.height = even(part.height / wider);
    if (wider < 1 - nearly) part.width = even(part.width * wider);
    return part;
}

OutputTraits TraitsForFit(const OutputTraits& from, const OutputTraits& to) {
    OutputTraits fit = from;
    if (!from.profile || from.fieldOrder != to.fieldOrder) return fit;
    const FilmPart part = PartOf(from, to);
    fit.source.width = part.width;
    fit.source.height = part.height;
    fit.pixelAspect = to.pixelAspect;
    return fit;
}

OutputTraits StoredTraits(const OutputTraits& traits, const AVCodec& codec, AVPixelFormat format, bool progressive) {
    OutputTraits stored = traits;
    if (traits.profile) UseProfile(stored);
    if (progressive) stored.fieldOrder = AV_FIELD_PROGRESSIVE;
    const AVPixFmtDescriptor& layout = *av_pix_fmt_desc_get(format);
    // Their streams hold whole chroma samples alone.
    if (codec.id == AV_CODEC_ID_H264 || codec.id == AV_CODEC_ID_HEVC) {
        stored.source.width &= ~((1 << layout.log2_chroma_w) - 1);
        stored.source.height &= ~((1 << layout.log2_chroma_h) - 1);
    }
    if (const AVRational rate = KnownRate(codec, stored.frameRate); !IsSame(rate, stored.frameRate)) {
        stored.frameRate = rate;
        stored.timeBase = av_inv_q(rate);
    }
    return stored;
}

PictureFit::PictureFit(const OutputTraits& from, const OutputTraits& to, const std::string& name)
    : m_name(name),
      m_filters(Filters(from, to)),
      m_timeBase(from.timeBase),
      m_counts(from.profile || !IsSame(from.frameRate, to.frameRate)) {}

void PictureFit::Put(FramePtr frame, const Take& take) {
    if (m_filters.empty()) {
        if (frame) take(std::move(frame));
        return;
    }
    if (frame && !m_graph) {
        const AVRational pixel = frame->sample_aspect_ratio.num > 0 ? frame->sample_aspect_ratio : AVRational{1, 1};
        std::ostringstream source;
        source << "video_size=" << frame->width << "x" << frame->height << ":pix_fmt=" << frame->format
               << ":time_base=" << m_timeBase.num << "/" << m_timeBase.den << ":pixel_aspect=" << pixel.num << "/"
               << pixel.den;
        m_graph.emplace(AVMEDIA_TYPE_VIDEO, source.str(), m_filters, m_name + ": its pictures cannot be fitted");
    }
    if (!m_graph) return;
    if (frame)
        m_end = frame->pts + frame->pkt_duration;
    else
        m_graph->End(m_end);
    if (frame) m_graph->Put(*frame);
    while (FramePtr fitted = m_graph->Take()) {
        if (m_counts) fitted->pkt_duration = 1;
        take(std::move(fitted));
    }
}

}  // namespace Nifikral
