#pragma once

#include <functional>
#include <string>
#include <vector>

#include "host/media/media_sink.h"

/// Chunks of a film are made apart, on one machine or on many, and joined without being coded again. Each lies in a
/// file of its own in the folder OUTPUT.chunks, without sound, with the times of the whole film; the sound comes in
/// when they are joined, since pieces of coded sound do not meet sample by sample.
namespace Nifikral {

/// What distinguishes one run from another: a number for the words of its command line, without those that leave the
/// result as it is. Chunks of different runs are not joined.
std::string RunMark(const std::vector<std::string>& words);

/// Whether the output is there and complete: a picture file for each of the frames, or a film, or the chunk, of so
/// many.
bool IsMadeAlready(const OutputOptions& output, const FrameRange& frames);

/// Writes the chunks of `frames`, in order, with the sound that `audioUntil` brings up to a time in seconds or further,
/// and removes them.
/// Throws input errors that name a chunk which is missing, incomplete or of another run.
void JoinChunks(const OutputOptions& output, const FrameRange& frames,
                const std::function<std::vector<PacketPtr>(double)>& audioUntil, MediaSink& sink);

}  // namespace Nifikral
