#include "host/media_sink.h"

#include <filesystem>

#include "host/encoder.h"
#include "host/errors.h"

namespace Nifikral {
namespace {

bool IsPictureFile(const std::string& path, const AVOutputFormat* format) {
    const std::string extension = std::filesystem::path(path).extension().string();
    return (format && std::string(format->name) == "image2") || extension == ".webp";
}

const AVOutputFormat* FindFormat(const OutputOptions& options) {
    std::string name = options.format;
    if (name.empty() && options.path == "-") name = "nut";
    if (name.empty()) return av_guess_format(nullptr, options.path.c_str(), nullptr);
    const AVOutputFormat* const format = av_guess_format(name.c_str(), nullptr, nullptr);
    return format ? format : av_guess_format(nullptr, ("." + name).c_str(), nullptr);
}

}  // namespace

OutputTraits::OutputTraits(const MediaSource& input, AVPixelFormat preferredFormat)
    : source(ShapeOf(input.FirstFrame())),
      preferred(preferredFormat),
      frameRate(input.FrameRate()),
      timeBase(input.VideoStream().time_base),
      audio(input.AudioStreams()),
      metadata(input.Metadata()) {
    const AVFrame& first = input.FirstFrame();
    primaries = first.color_primaries;
    transfer = first.color_trc;
    range = first.color_range;
    chromaLocation = first.chroma_location;
    pixelAspect = first.sample_aspect_ratio;
    if (first.interlaced_frame) {
        // The container may know how the fields are stored, the picture only which is shown first.
        fieldOrder = input.VideoStream().codecpar->field_order;
        if (fieldOrder == AV_FIELD_UNKNOWN || fieldOrder == AV_FIELD_PROGRESSIVE)
            fieldOrder = first.top_field_first ? AV_FIELD_TB : AV_FIELD_BT;
    }
    // Containers may know the pixels' shape where the pictures do not.
    if (pixelAspect.num == 0) pixelAspect = input.VideoStream().sample_aspect_ratio;
}

std::unique_ptr<MediaSink> OpenSink(const OutputOptions& options, const OutputTraits& traits, bool tryOnly) {
    const AVOutputFormat* const format = FindFormat(options);
    if (options.format.empty() && options.path != "-" && IsPictureFile(options.path, format))
        return OpenPictureSink(options, traits, tryOnly);
    if (format && !(format->flags & AVFMT_NOFILE)) return OpenVideoSink(options, traits, *format, tryOnly);
    if (!options.format.empty())
        throw HostError(ExitCode::Usage, "-f " + options.format + " names no format; try nut, y4m, matroska or mp4");
    throw HostError(ExitCode::Usage, options.path +
                                         ": its extension tells no format; use .mp4, .mkv, .png, .jpg, or "
                                         "name the format with -f");
}

}  // namespace Nifikral
