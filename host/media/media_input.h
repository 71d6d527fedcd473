#pragma once

#include <string>
#include <vector>

#include "host/media/ffmpeg_handles.h"
#include "host/media/ffmpeg_log.h"
#include "host/media/picture_reader.h"
#include "host/media/standard_input.h"

/// Opening what is to be decoded. Everything throws input errors that name the file and the remedy.
namespace Nifikral {

/// Whether a path stands for stdin.
bool IsPipe(const std::string& path);
/// Refuses a file that is not there, or empty, or a folder.
void CheckLocalFile(const std::string& path);

/// Opens a file, an address or, for the path "-", stdin. With `format` null, what the file is shows in it. `listener`
/// is the caller's on this thread. `headOnly`: where its head lists the streams, nothing is decoded to know more of
/// them.
InputPtr OpenInput(const std::string& path, const AVInputFormat* format, StandardInput* standardInput,
                   const FfmpegListener& listener, bool headOnly = false);
/// Whether a file's head says that it holds several pictures. False where that is not to be had without decoding.
bool HoldsFilm(const std::string& path);
/// Whether each packet is a picture file of its own.
bool HoldsPictureFiles(const AVFormatContext& input);

/// The reader for a file or stdin; null where it is for FFmpeg. `alone`: the file is not one of many, which FFmpeg
/// decodes several at a time. `enoughSide`: as MediaSource::Options has it.
std::unique_ptr<PictureReader> OpenPictureFile(const std::string& path, bool alone, StandardInput* standardInput,
                                               int enoughSide = 0);
/// A container without packets for what a reader brings, of pictures like `first`.
InputPtr InputOf(const PictureReader& reader, const AVFrame& first);

/// All of a file; empty where it cannot be read. Refuses one of more than 1 GB, which no picture is.
std::vector<std::uint8_t> ReadWholeFile(const std::string& path);

}  // namespace Nifikral
