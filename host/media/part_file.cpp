#include "host/media/part_file.h"

extern "C" {
#include <libavutil/error.h>
}

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>

#include "host/base/errors.h"
#include "host/media/ffmpeg_handles.h"

namespace Nifikral {
namespace fs = std::filesystem;

void CheckOutputPath(const std::string& path, bool overwrite) {
    std::error_code error;
    const auto refuse = [](const std::string& line) { throw HostError(ExitCode::Output, line); };
    const fs::path folder = fs::path(path).has_parent_path() ? fs::path(path).parent_path() : fs::path(".");
    if (!fs::exists(folder, error))
        refuse(path + ": the folder " + folder.string() + " does not exist; make it first (mkdir -p)");
    if (!fs::is_directory(folder, error)) refuse(path + ": " + folder.string() + " is no folder; name another place");
    if (fs::is_directory(path, error)) refuse(path + " is a folder; name a file in it");
    if (fs::is_regular_file(path, error) && !overwrite) refuse(path + " exists already; -y overwrites it");
    if (access(folder.c_str(), W_OK) != 0 && !fs::exists(path, error))
        refuse(path + ": the folder " + folder.string() + " is not writable; name another place");
}

void ThrowWriteError(const std::string& path, int error) {
    std::string remedy = "name another place";
    if (error == AVERROR(ENOSPC)) remedy = "free some space or name another place";
    if (error == AVERROR(EFBIG)) remedy = "raise the limit for file sizes or name another place";
    if (error == AVERROR(EPIPE)) remedy = "the program that reads it has ended";
    throw HostError(ExitCode::Output,
                    path + " cannot be written (" + ErrorText(error) + "); " + remedy + "; no half file was kept");
}

PartFile::PartFile(const std::string& path, bool overwrite) : m_final(path), m_part(path), m_overwrite(overwrite) {
    CheckOutputPath(path, overwrite);
    std::error_code error;
    m_direct = fs::exists(path, error) && !fs::is_regular_file(path, error);
    if (!m_direct) m_part.append(".").append(std::to_string(getpid())).append(".part");
}

PartFile::~PartFile() {
    if (!m_committed && !m_direct) std::remove(m_part.c_str());
}

void PartFile::Write(std::string_view bytes) const {
    errno = 0;
    std::FILE* const stream = std::fopen(m_part.c_str(), "wb");
    bool good = stream && std::fwrite(bytes.data(), 1, bytes.size(), stream) == bytes.size();
    if (stream && std::fclose(stream) != 0) good = false;
    if (!good) ThrowWriteError(m_final, AVERROR(errno ? errno : EIO));
}

void PartFile::Commit() {
    if (m_direct) return;
    const unsigned flags = m_overwrite ? 0 : RENAME_NOREPLACE;
    int result = renameat2(AT_FDCWD, m_part.c_str(), AT_FDCWD, m_final.c_str(), flags);
    // Some file systems know no flags; the name was free when the run began.
    if (result != 0 && errno == EINVAL) result = std::rename(m_part.c_str(), m_final.c_str());
    if (result != 0) ThrowWriteError(m_final, AVERROR(errno));
    m_committed = true;
}

}  // namespace Nifikral
