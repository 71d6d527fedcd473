#pragma once

#include <functional>
#include <optional>
#include <string>

#include "host/media/filter_graph.h"
#include "host/media/media_sink.h"

namespace Nifikral {

/// What an output stores of pictures with these traits: of the profile's size, rate and colours where there is one,
/// else at a rate that the codec knows. `format` is the encoder's. `progressive`: pictures are whole, however they
/// come.
OutputTraits StoredTraits(const OutputTraits& traits, const AVCodec& codec, AVPixelFormat format,
                          bool progressive = false);

/// The part of the stored picture, in its middle, that pictures take up, in even sides.
struct FilmPart {
    int width, height;
};
FilmPart PartOf(const OutputTraits& from, const OutputTraits& to);

/// How pictures had better come to be fitted: in the size of that part, since bringing them to it can go on beside the
/// encoder. Interlaced ones that are to be made whole come as they are.
OutputTraits TraitsForFit(const OutputTraits& from, const OutputTraits& to);

/// Brings pictures into the size and the rate that are stored: scaled and padded where a profile asks for it, else
/// cropped. Interlaced ones are made whole first where their rows change. Threads: one at a time.
class PictureFit {
 public:
    /// From pictures with the traits `from` to those of `to`. `name` is the output's.
    PictureFit(const OutputTraits& from, const OutputTraits& to, const std::string& name);

    using Take = std::function<void(FramePtr)>;
    /// Null: nothing comes behind. `take` gets each picture that is ready, with its time in `to`'s time base.
    void Put(FramePtr frame, const Take& take);

 private:
    std::string m_name, m_filters;
    AVRational m_timeBase;
    std::int64_t m_end = 0;              // of the last picture
    bool m_counts;                       // times count pictures behind it
    std::optional<FilterGraph> m_graph;  // made for the first picture
};

}  // namespace Nifikral
