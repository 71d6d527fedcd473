#include "host/media/media_sink.h"

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <tuple>

#include "host/base/errors.h"
#include "host/base/log.h"
#include "host/media/film_profile.h"
#include "host/media/picture_sink.h"
#include "host/media/video_sink.h"

namespace Nifikral {
namespace {

bool IsPictureFile(const std::string& path, const AVOutputFormat* format) {
    const std::string extension = std::filesystem::path(path).extension().string();
    return (format && std::string(format->name) == "image2") || extension == ".webp";
}

const AVOutputFormat* FindFormat(const OutputOptions& options) {
    std::string name = options.format;
    if (name.empty() && options.path == "-") name = "nut";
    const AVOutputFormat* format = name.empty() ? nullptr : av_guess_format(name.c_str(), nullptr, nullptr);
    if (format) return format;
    format = av_guess_format(nullptr, (name.empty() ? options.path : "." + name).c_str(), nullptr);
    // By their extensions these would be streams of the first MPEG, or for discs that no one makes any more.
    const bool program =
        format && (format->name == std::string_view("mpeg") || format->name == std::string_view("svcd"));
    return program ? av_guess_format("vob", nullptr, nullptr) : format;
}

// Whether pictures are stored, or will be by their profile, as a video DVD has them.
bool FitsDvd(const OutputTraits& traits) {
    if (traits.profile) return traits.profile->dvd;
    for (const std::string& name : ProfileNames()) {
        const FilmProfile& profile = *FindProfile(name);
        if (profile.dvd && profile.width == traits.source.width && profile.height == traits.source.height &&
            av_cmp_q(profile.frameRate, traits.frameRate) == 0)
            return true;
    }
    return false;
}

}  // namespace

OutputTraits TraitsOf(const MediaSource& input, AVPixelFormat preferred) {
    const AVFrame& first = input.FirstFrame();
    const AVStream& stream = input.VideoStream();
    OutputTraits traits;
    traits.source = input.Shape(first);
    traits.preferred = preferred;
    traits.primaries = first.color_primaries;
    traits.transfer = first.color_trc;
    traits.range = first.color_range;
    traits.chromaLocation = first.chroma_location;
    // Containers may know the pixels' shape where the pictures do not.
    traits.pixelAspect = first.sample_aspect_ratio.num ? first.sample_aspect_ratio : stream.sample_aspect_ratio;
    traits.frameRate = input.FrameRate();
    traits.timeBase = stream.time_base;
    if (first.interlaced_frame) {
        // The container may know how the fields are stored, the picture only which is shown first.
        traits.fieldOrder = stream.codecpar->field_order;
        if (traits.fieldOrder == AV_FIELD_UNKNOWN || traits.fieldOrder == AV_FIELD_PROGRESSIVE)
            traits.fieldOrder = first.top_field_first ? AV_FIELD_TB : AV_FIELD_BT;
    }
    traits.audio = input.AudioStreams();
    traits.metadata = input.Metadata();
    traits.extras = input.ExtraStreams();
    traits.chapters = input.Chapters();
    std::tie(traits.begin, traits.end) = input.Window();
    traits.photographs = input.Photographs();
    return traits;
}

OutputTraits TraitsOfFilm(int width, int height, AVRational frameRate, AVPixelFormat preferred) {
    const bool highDefinition = UsualMatrix(height) == AVCOL_SPC_BT709;
    OutputTraits traits;
    traits.source = {preferred, width, height, UsualMatrix(height), false};
    traits.preferred = preferred;
    traits.primaries = highDefinition ? AVCOL_PRI_BT709 : height == 576 ? AVCOL_PRI_BT470BG : AVCOL_PRI_SMPTE170M;
    traits.transfer = highDefinition ? AVCOL_TRC_BT709 : AVCOL_TRC_SMPTE170M;
    traits.range = AVCOL_RANGE_MPEG;
    traits.chromaLocation = AVCHROMA_LOC_LEFT;
    traits.pixelAspect = {1, 1};
    traits.frameRate = frameRate;
    traits.timeBase = av_inv_q(frameRate);
    return traits;
}

bool IsPictureOutput(const OutputOptions& options) {
    return options.format.empty() && options.path != "-" && IsPictureFile(options.path, FindFormat(options));
}

bool IsNumberedOutput(const OutputOptions& options) {
    return IsPictureOutput(options) && av_filename_number_test(options.path.c_str());
}

std::unique_ptr<MediaSink> OpenSink(const OutputOptions& options, const OutputTraits& given, bool tryOnly) {
    if (IsPictureOutput(options)) {
        if (given.profile)
            throw HostError(ExitCode::Usage, "--profile is for films, and " + options.path + " is a picture");
        return OpenPictureSink(options, given);
    }
    const AVOutputFormat* format = FindFormat(options);
    OutputTraits traits = given;
    if (format && (format->name == std::string_view("vob") || format->name == std::string_view("dvd"))) {
        traits.dvd = FitsDvd(traits);
        if (traits.dvd)
            format = av_guess_format("dvd", nullptr, nullptr);
        else if (!options.chunk)
            PrintWarning(options.path +
                         " is not as video DVDs want it; --profile pal-16:9, ntsc-4:3 and so on make it so");
    }
    if (format && !(format->flags & AVFMT_NOFILE)) return OpenVideoSink(options, traits, *format, tryOnly);
    if (!options.format.empty())
        throw HostError(ExitCode::Usage, "-f " + options.format + " names no format; try nut, y4m, matroska or mp4");
    throw HostError(ExitCode::Usage, options.path +
                                         ": its extension names no format; use .mp4, .mkv, .png, .jpg, or "
                                         "name the format with -f");
}

}  // namespace Nifikral
