#pragma once

#include <string>

#include "host/media/frame_range.h"

/// Where the chunks of a film lie, and in what: one file each, in the folder OUTPUT.chunks.
namespace Nifikral {

/// The container of every chunk, and the metadata that says which run it belongs to.
inline constexpr char chunkContainer[] = "nut", chunkMark[] = "nifikral_run";

std::string ChunkFolder(const std::string& output);
std::string ChunkPath(const std::string& output, const FrameRange& chunk);
/// Throws an output error that names the folder.
void MakeChunkFolder(const std::string& output);

}  // namespace Nifikral
