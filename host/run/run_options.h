#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "host/media/frame_range.h"
#include "host/media/media_sink.h"

namespace Nifikral {

/// Which frames a run has, and which of them are made now.
struct FramesOfRun {
    FrameRange run, made;
    bool certain = false;  ///< all of `made` are there; else the input may end earlier
};

/// The settings of every command that makes films or pictures.
struct RunOptions {
    OutputOptions output;
    std::string frames;       ///< "A-B", "A-" or "A"; empty: all
    std::string pixelFormat;  ///< of the pictures that the module sees; empty: the one that fits best
    std::string profile;      ///< the name of what a film is fitted to, or empty
    int threads = 0;          ///< 0: all cores
    bool dryRun = false;
    bool confined = false;                ///< reach nothing but what the command line names and the output's folder
    std::vector<std::string> namedWords;  ///< the words of the command line, where it is confined
    std::string chunk;          ///< "A-B": only these of the run's frames, to be joined later; empty: the whole run
    bool skipExisting = false;  ///< leave an output that is complete as it is
    bool namesMany = false;     ///< the output's path may be a folder or a pattern, for any number of inputs
    bool showsProgress = true;
    std::string progressPrefix;       ///< stands before what the progress line says
    std::optional<long long> joinTo;  ///< join the chunks up to this frame instead of making pictures
    /// Receives the run's output and its frames, counted, instead of anything being made.
    std::function<void(const OutputOptions&, const FrameRange&)> reportFrames;

    /// The frames of a run that has `count` of them in all; 0: as many as its input. Throws usage errors.
    FramesOfRun Frames(long long count) const;
    /// The output of a run that makes these frames: itself, or a chunk of it.
    OutputOptions OutputFor(const FrameRange& made) const;
    int ThreadCount() const;
    /// Throws a usage error when the output is an existing file that the run reads.
    void RefuseAsOutput(const std::string& input) const;
};

}  // namespace Nifikral
