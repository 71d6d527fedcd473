#pragma once

#include <string>

#include "host/media/media_input.h"

namespace Nifikral {

/// Whether a file's name says that it holds subtitles.
bool IsSubtitleName(const std::string& path);

/// The language that a name says before its extension, as lake.de.srt does: ISO 639-1; empty: none.
std::string LanguageOfName(const std::string& path);

/// A file with a track of subtitles that belongs to a film.
class SubtitleFile {
 public:
    /// Throws input errors that name the file and the remedy.
    explicit SubtitleFile(const std::string& path);

    const AVStream& Stream() const { return *m_stream; }
    /// The next of the track; null behind the last.
    PacketPtr Next() const;

 private:
    InputPtr m_input;
    AVStream* m_stream = nullptr;
};

/// Makes UTF-8 of a packet of text that is none, as programs of old wrote it in the west of Europe (Windows-1252), and
/// reports so once for subtitles of this name.
void MakeUtf8(AVCodecID codec, const std::string& name, AVPacket& packet);

}  // namespace Nifikral
