#pragma once

#include <functional>
#include <optional>
#include <span>

#include "host/media/jpeg_picture.h"
#include "host/media/media_sink.h"

namespace Nifikral {

/// A started encoder with the settings that suit it.
class Encoder {
 public:
    struct Purpose {
        bool still = false;                           ///< picture files: pts are numbers of frames
        bool globalHeader = false;                    ///< the container wants the headers apart
        std::span<const AVPixelFormat> formats = {};  ///< all that the container holds, when fewer than the encoder's
    };

    Encoder(const AVCodec& codec, const OutputOptions& options, const OutputTraits& traits, const Purpose& purpose);
    Encoder(const Encoder&) = delete;
    Encoder& operator=(const Encoder&) = delete;

    const PictureShape& Shape() const { return m_shape; }
    const AVCodecContext& Context() const { return *m_context; }
    std::string Description() const;
    /// Null ends the encoding. `store` is called for each packet, whose times are in the context's time base.
    void Encode(FramePtr frame, const std::function<void(AVPacket&)>& store);

 private:
    void UseJpegWriter(const OutputTraits& traits);
    void SetQuality(const OutputOptions& options, bool dvd);
    void SetDvdRates();
    void UsePass(StatisticsOfPass& pass);
    bool BeginsAnew(std::int64_t time);

    CodecPtr m_context;
    std::optional<JpegWriter> m_jpeg;  // encodes in its place
    PictureShape m_shape;
    AVRational m_sourceBase;
    std::int64_t m_lastTime = AV_NOPTS_VALUE;
    std::vector<double> m_keyTimes;  // those to come from m_nextKey on
    std::size_t m_nextKey = 0;
    StatisticsOfPass* m_firstPass = nullptr;  // while this is it
};

/// The layout in which an encoder is to get pictures.
AVPixelFormat ChooseFormat(const AVCodec& codec, const OutputTraits& traits, const Encoder::Purpose& purpose);

/// The encoder by name, or the usual one. Throws a usage error for a name that there is none of.
const AVCodec& FindEncoder(const std::string& name, AVCodecID usual);

}  // namespace Nifikral
