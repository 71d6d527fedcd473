#include "host/media/chunk_file.h"

#include <cstdio>
#include <filesystem>

#include "host/base/errors.h"

namespace Nifikral {

namespace fs = std::filesystem;

std::string ChunkFolder(const std::string& output) { return output + ".chunks"; }

std::string ChunkPath(const std::string& output, const FrameRange& chunk) {
    char name[64];
    std::snprintf(name, sizeof name, "/%06lld-%06lld.%s", chunk.first, chunk.last, chunkContainer);
    return ChunkFolder(output) + name;
}

void MakeChunkFolder(const std::string& output) {
    std::error_code error;
    fs::create_directory(ChunkFolder(output), error);
    if (error)
        throw HostError(ExitCode::Output, ChunkFolder(output) + " cannot be made (" + error.message() +
                                              "); name another place for " + output);
}

}  // namespace Nifikral
