#pragma once

#include <string>

#include "host/media/ffmpeg_handles.h"

/// Streams beside the pictures of a film.
namespace Nifikral {

/// Adds a stream of this coding.
AVStream& AddStream(AVFormatContext& output, const AVCodecParameters& coding, AVRational timeBase);

/// Whether the container takes one stream more, or, with null, those that it has: only the attempt to write its header
/// shows.
bool Takes(const AVFormatContext& output, const AVCodecParameters* more, AVRational timeBase);

/// "aac (eng)": the coding of a stream and its language.
std::string StreamTitle(const AVStream& stream);
/// Appends a word to a list in which each stands once.
void AppendWord(std::string& list, const std::string& word);

}  // namespace Nifikral
