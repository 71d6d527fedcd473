#pragma once

#include <array>
#include <functional>
#include <string>

#include "host/media/media_sink.h"

namespace Nifikral {

/// The colours of all subtitles on a disc, 0xRRGGBB; dvdauthor has to be given them.
inline constexpr std::array<std::uint32_t, 16> discPalette = {
    0x000000, 0xFFFFFF, 0x808080, 0xFFFF00, 0x00FFFF, 0x00FF00, 0xFF00FF, 0xFF0000,
    0x0000FF, 0x808000, 0x008080, 0x008000, 0x800080, 0x800000, 0x000080, 0xFFA040};

/// Where subtitles of a film lie in the picture that is stored.
struct SubtitlePlace {
    /// For a film with the traits `from` that is stored with those of `to`.
    SubtitlePlace(const OutputTraits& from, const OutputTraits& to);

    int width, height;          ///< of the stored picture
    int squareWidth;            ///< its width in square pixels
    int filmWidth, filmHeight;  ///< of the film's own pictures
    int partWidth, partHeight;  ///< of the film within the stored picture
};

/// A track of subtitles, of text or of pictures, as a video DVD has them: pictures of at most four colours. Threads:
/// one at a time.
class DiscSubtitles {
 public:
    static constexpr std::size_t mostTracks = 32;
    /// Whether there is a decoder for them.
    static bool Takes(const AVCodecParameters& coding);

    DiscSubtitles(const AVStream& from, const SubtitlePlace& place, PaintText paint);

    using Store = std::function<void(AVPacket&)>;
    /// `store` gets what becomes of a packet, with times in `from`'s time base. What cannot be decoded or does not fit
    /// is reported once and left out.
    void Convert(AVPacket& packet, const Store& store);

 private:
    struct Piece {
        FramePtr picture;  // BGRA, in stored pixels
        int x, y;
    };
    std::vector<Piece> Pieces(const AVSubtitle& subtitle) const;
    Piece OfText(const std::string& ass) const;
    Piece OfPicture(const AVSubtitleRect& rect) const;
    void Encode(const std::vector<Piece>& pieces, const AVPacket& packet, std::int64_t milliseconds,
                const Store& store) const;
    void LeaveOut() const;

    std::string m_name;
    SubtitlePlace m_place;
    PaintText m_paint;
    AVRational m_timeBase;
    bool m_lacksPalette;  // its colours are guessed
    CodecPtr m_decoder, m_encoder;
    bool m_endless = false;  // what is shown stays until the next
};

}  // namespace Nifikral
