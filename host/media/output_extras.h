#pragma once

#include <functional>
#include <string>
#include <vector>

#include "host/media/disc_subtitles.h"
#include "host/media/media_sink.h"
#include "host/media/subtitle_file.h"

namespace Nifikral {

/// What a film has beside pictures and sound: subtitles, cover pictures, attached files and chapters. All is kept that
/// the container holds; subtitles of text become the container's own kind. Threads: one at a time.
class OutputExtras {
 public:
    /// Adds streams and chapters, and prints one line that names what the container does not hold. `name` is the
    /// output's.
    OutputExtras(AVFormatContext& output, const std::string& name, const OutputOptions& options,
                 const OutputTraits& traits, const OutputTraits& stored);

    using Store = std::function<void(AVPacket&)>;
    /// What belongs to the beginning, behind the header.
    void Begin(const Store& store) const;
    /// A packet of any stream of the input. `store` gets those of the output.
    void Write(AVPacket& packet, const Store& store) const;
    /// The pictures have come so far; so do subtitles from files of their own.
    void Reach(double seconds, const Store& store);

 private:
    struct Subtitles {
        int from;
        AVRational timeBase;
        AVStream* to;
        CodecPtr decoder, encoder;  // none where they are copied or become pictures
        std::unique_ptr<DiscSubtitles> pictures;
    };
    struct File {
        SubtitleFile file;
        int stream;      // the `from` of its subtitles
        PacketPtr next;  // null at the end
    };
    struct Cover {
        const AVStream *from, *to;
    };
    bool AddSubtitles(AVFormatContext& output, const AVStream& from);
    bool AddPictures(AVFormatContext& output, const AVStream& from, int number, const SubtitlePlace& place,
                     const PaintText& paint);
    void AddFile(AVFormatContext& output, const std::string& path, const SubtitlePlace& place, const PaintText& paint);
    bool AddCover(AVFormatContext& output, const AVStream& from);
    bool CutToLength(AVPacket& packet, AVRational timeBase) const;
    static PacketPtr Convert(const Subtitles& subtitles, AVPacket& packet);

    double m_seconds;  // how long the output is; infinite where that is not known
    std::vector<Subtitles> m_subtitles;
    std::vector<File> m_files;
    std::vector<Cover> m_covers;
};

}  // namespace Nifikral
