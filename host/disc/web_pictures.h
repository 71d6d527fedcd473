#pragma once

#include <string>
#include <vector>

#include "host/catalogue/effect_module.h"
#include "host/disc/disc_project.h"
#include "host/media/frame_range.h"
#include "host/run/run_options.h"

/// The films of a disc for browsers, coded: in one run, or in chunks that meet without being coded again.
namespace Nifikral {

/// The most that their pictures have, lying; turned for those that stand upright.
inline constexpr int webAcross = 1920, webDown = 1080;

/// How films and menus are coded for browsers.
RunOptions RunForWeb(const std::string& output, int threads);

/// A film that is to be coded.
struct WebCoding {
    const DiscProject* project = nullptr;
    int film = 0;        ///< its place in the project
    std::string output;  ///< an .mp4 with all its sound tracks; replaced where it is there
    std::string key;     ///< what it is made from: chunks of another key are not taken
    int threads = 0;     ///< 0: all cores
};

/// Makes the output, from its chunks where these are planned; those that are missing are made then. Throws host errors.
void CodeForWeb(const WebCoding& coding, const EffectModule& module);

/// Plans so many chunks, fewer for a short film, and returns them. None: the film is made in one run, since pictures
/// that browsers play are taken over, and those made of fields do not meet. Counts the pictures by decoding them,
/// unless that was planned already. Throws host errors.
std::vector<FrameRange> PlanWebChunks(const WebCoding& coding, long long chunks, const EffectModule& module);

/// Makes one of these, beside the output; one that is complete stays. Throws host errors.
void CodeWebChunk(const WebCoding& coding, const FrameRange& chunk, const EffectModule& module);

}  // namespace Nifikral
