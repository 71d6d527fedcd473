#include "host/media/picture_sink.h"

#include <filesystem>
#include <utility>

#include "host/base/errors.h"
#include "host/base/log.h"
#include "host/media/encoder.h"
#include "host/media/numbered_files.h"
#include "host/media/part_file.h"
#include "host/media/picture_metadata.h"

namespace Nifikral {
namespace {

namespace fs = std::filesystem;

// One picture file a frame; or a single one, which stands under its name when the run has ended well.
class PictureSink final : public MediaSink {
 public:
    PictureSink(const OutputOptions& options, const OutputTraits& traits, const AVCodec& codec)
        : m_options(options),
          m_photographs(traits.photographs),
          m_sequence(av_filename_number_test(options.path.c_str())),
          m_encoder(codec, options, traits, {.still = true}) {
        CheckOutputPath(options.path, options.overwrite);
        if (m_sequence && !options.overwrite) CheckNumbersAreFree();
        if (options.chunk && !m_sequence)
            throw HostError(ExitCode::Usage, options.path + " is one picture; there is nothing to share out");
    }

    const PictureShape& Shape() const override { return m_encoder.Shape(); }
    std::string Description() const override { return m_encoder.Description(); }

    void Write(FramePtr frame, long long number) override {
        if (!m_sequence && m_frames++ > 0)
            throw HostError(ExitCode::Usage, m_options.path + " is one picture and the input has more; name them as " +
                                                 NumberedName() + ", or pick one with --frames N-N");
        frame->pts = number;
        m_encoder.Encode(std::move(frame), [this](AVPacket& packet) { Store(packet); });
    }

    void Finish() override {
        m_encoder.Encode(nullptr, [this](AVPacket& packet) { Store(packet); });
        if (m_single) m_single->Commit();
    }

    std::string Kept() const override {
        if (!m_sequence || m_stored == 0) return MediaSink::Kept();
        return "the pictures up to " + m_last + " stay (" + std::to_string(m_stored) + " of them)";
    }

 private:
    void Store(const AVPacket& packet) {
        const std::string path = m_sequence ? NumberedPath(m_options.path, packet.pts) : m_options.path;
        auto file = std::make_unique<PartFile>(path, m_options.overwrite);
        std::string picture(reinterpret_cast<const char*>(packet.data), std::size_t(packet.size));
        if (const std::string* const photograph = PhotographOf(packet.pts)) {
            const std::string left = CopyMetadata(*photograph, picture);
            if (!left.empty() && !std::exchange(m_leftSaid, true))
                PrintWarning(m_options.path + " does not hold what " + *photograph +
                             " says beside its picture: " + left);
        }
        file->Write(picture);
        if (!m_sequence) {
            m_single = std::move(file);
            return;
        }
        // Waiting for the disk each time would take as long as all the rest.
        file->Commit(false);
        m_last = path;
        ++m_stored;
    }

    std::string NumberedName() const {
        const fs::path path(m_options.path);
        return (path.parent_path() / (path.stem().string() + "_%06d" + path.extension().string())).string();
    }

    // Any file that the pattern could name; how many frames come is not known yet. Those of other chunks may be there.
    void CheckNumbersAreFree() const {
        if (m_options.chunk) {
            for (long long number = m_options.chunk->first; number <= m_options.chunk->last; ++number)
                CheckOutputPath(NumberedPath(m_options.path, number), false);
            return;
        }
        for (const long long number : ExistingNumbers(m_options.path))
            CheckOutputPath(NumberedPath(m_options.path, number), false);
    }

    const std::string* PhotographOf(std::int64_t number) const {
        const std::size_t place = m_photographs.size() == 1 ? 0 : std::size_t(number);
        return place < m_photographs.size() ? &m_photographs[place] : nullptr;
    }

    OutputOptions m_options;
    std::vector<std::string> m_photographs;
    bool m_leftSaid = false;
    bool m_sequence;
    Encoder m_encoder;
    long long m_frames = 0;
    std::unique_ptr<PartFile> m_single;
    std::string m_last;  // of the numbered files that stand under their names
    long long m_stored = 0;
};

}  // namespace

std::unique_ptr<MediaSink> OpenPictureSink(const OutputOptions& options, const OutputTraits& traits) {
    AVCodecID usual = AV_CODEC_ID_WEBP;
    std::string encoder = options.encoder;
    if (fs::path(options.path).extension() != ".webp")
        usual = av_guess_codec(av_guess_format("image2", nullptr, nullptr), nullptr, options.path.c_str(), nullptr,
                               AVMEDIA_TYPE_VIDEO);
    else if (encoder.empty() && avcodec_find_encoder_by_name("libwebp"))
        encoder = "libwebp";
    return std::make_unique<PictureSink>(options, traits, FindEncoder(encoder, usual));
}

}  // namespace Nifikral
