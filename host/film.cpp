#include "host/film.h"

#include <tbb/enumerable_thread_specific.h>

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/pixdesc.h>
}

#include <algorithm>
#include <sstream>

#include "TarvoBased/ITarvoException.h"
#include "host/errors.h"
#include "host/frame_adapter.h"
#include "host/frame_range.h"
#include "host/interruption.h"
#include "host/log.h"
#include "host/pipeline.h"

namespace Nifikral {
namespace {

FrameRange RangeWithin(const Film& film, const RunOptions& options) {
    FrameRange range = ParseRange(options.frames);
    const std::string has =
        "the film has " + std::to_string(film.frames) + " frames, 0 to " + std::to_string(film.frames - 1);
    if (range.first >= film.frames)
        throw HostError(ExitCode::Usage, "--frames lies past the end: " + has + "; choose among these");
    if (range.last != FrameRange::noEnd && range.last >= film.frames) PrintWarning("--frames ends earlier: " + has);
    range.last = std::min(range.last, film.frames - 1);
    return range;
}

void RefuseManyFramesInOnePicture(const RunOptions& options, const FrameRange& range) {
    const std::string& path = options.output.path;
    if (IsPictureOutput(options.output) && !av_filename_number_test(path.c_str()) && range.first != range.last)
        throw HostError(ExitCode::Usage, path +
                                             " is one picture and the film has more; name them as in frame_%06d.png" +
                                             ", or pick one with --frames N");
}

// Calls the generator for one frame after the other.
class FilmSource {
 public:
    FilmSource(AVBased::IVideoProc& generator, const Film& film, unsigned formatCode, const FrameRange& range)
        : m_generator(generator), m_film(film), m_formatCode(formatCode), m_range(range) {}

    std::optional<SourceStep> Next() {
        // What a frame shows may follow from those before it, so the generator makes these as well.
        while (m_number < m_range.first) Make();
        if (m_number > m_range.last) return std::nullopt;
        SourceStep step;
        step.number = m_number;
        step.frame = Make();
        step.frame->pts = step.number - m_range.first;
        return step;
    }

 private:
    FramePtr Make() {
        ThrowIfInterrupted();
        const AVPixelFormat format = FfmpegFormat(m_formatCode);
        FramePtr frame = NewPicture(format, m_film.width, m_film.height);
        frame->colorspace = IsRgb(format) ? AVCOL_SPC_RGB : UsualMatrix(m_film.height);
        frame->color_range = IsRgb(format) ? AVCOL_RANGE_JPEG : AVCOL_RANGE_MPEG;
        frame->pkt_duration = 1;
        const std::ptrdiff_t pitches[4] = {frame->linesize[0], frame->linesize[1], frame->linesize[2],
                                           frame->linesize[3]};
        av_image_fill_black(frame->data, pitches, format, frame->color_range, frame->width, frame->height);
        FrameAdapter adapter(*frame, m_formatCode, int(m_number));
        AVBased::ImagePostion record{0, 0, unsigned(frame->width), unsigned(frame->height)};
        TarvoBased::GetTarvoException()->Clear();
        m_generator.ProcFrameInPlace(&record, int(m_number), &adapter);
        ThrowIfInterrupted();
        if (const std::optional<std::string> error = TakeModuleError())
            throw HostError(ExitCode::Failed, std::string(m_generator.GetName()) + " fails at frame " +
                                                  std::to_string(m_number) + ": " + *error);
        ++m_number;
        return frame;
    }

    AVBased::IVideoProc& m_generator;
    Film m_film;
    unsigned m_formatCode;
    FrameRange m_range;
    long long m_number = 0;
};

}  // namespace

void RenderFilm(AVBased::IVideoProc& generator, const Film& film, const RunOptions& options, const std::string& name) {
    const FrameRange range = RangeWithin(film, options);
    RefuseManyFramesInOnePicture(options, range);
    AVPixelFormat preferred = IsPictureOutput(options.output) ? AV_PIX_FMT_BGRA : AV_PIX_FMT_YUV420P;
    if (!options.pixelFormat.empty()) preferred = FfmpegFormat(ParseFormat(options.pixelFormat));
    OutputOptions output = options.output;
    output.threads = options.ThreadCount();
    const OutputTraits traits = TraitsOfFilm(film.width, film.height, film.frameRate, preferred);
    const std::unique_ptr<MediaSink> sink = OpenSink(output, traits, options.dryRun);
    const PictureShape shape = sink->Shape();
    const unsigned formatCode =
        options.pixelFormat.empty() ? EffectFormat(shape.format, false) : ParseFormat(options.pixelFormat);
    const bool overBlack = HasAlpha(FfmpegFormat(formatCode)) && !HasAlpha(shape.format);

    std::ostringstream summary;
    summary << name << ": frames " << range.first << " to " << range.last << " of " << film.frames << ", "
            << av_q2d(film.frameRate) << " a second, made as " << av_get_pix_fmt_name(FfmpegFormat(formatCode))
            << " (code " << formatCode << "); " << options.output.path << ": " << sink->Description();
    if (options.dryRun) {
        std::fprintf(stderr, "%s\n", summary.str().c_str());
        return;
    }
    PrintDetail(summary.str());

    FilmSource source(generator, film, formatCode, range);
    tbb::enumerable_thread_specific<PictureConverter> converters([&] { return PictureConverter(shape); });
    const Stages stages{[&] { return source.Next(); },
                        [&](SourceStep& step) {
                            if (overBlack) LayOverBlack(*step.frame);
                            converters.local().Convert(step.frame);
                        }};
    RunReport report;
    {
        Progress progress(range.last - range.first + 1);
        report = RunPipeline(stages, *sink, output.threads, progress);
    }
    std::ostringstream spent;
    spent << report.frames << " frames; seconds of work: making " << report.nextSeconds << ", encoding "
          << report.encodeSeconds;
    PrintDetail(spent.str());
}

}  // namespace Nifikral
