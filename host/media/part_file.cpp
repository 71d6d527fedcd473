#include "host/media/part_file.h"

extern "C" {
#include <libavutil/error.h>
}

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <ctime>
#include <filesystem>

#include "host/base/errors.h"
#include "host/media/ffmpeg_handles.h"

namespace Nifikral {
namespace fs = std::filesystem;
namespace {

// The name of a part file is NAME.nifikral-HOST-PID-NUMBER.part.
constexpr std::string_view mark = ".nifikral-", extension = ".part";

std::string HostName() {
    char name[41] = "";
    gethostname(name, sizeof name - 1);
    return name;
}

// Where a chain of links to a file ends, whether or not the file is there; devices are taken by any name.
fs::path Followed(fs::path path) {
    std::error_code error;
    if (fs::exists(path, error) && !fs::is_regular_file(path, error)) return path;
    for (int links = 0; links < 40 && fs::is_symlink(path, error); ++links)
        path = path.parent_path() / fs::read_symlink(path, error);
    return path;
}

fs::path FolderOf(const fs::path& path) { return path.has_parent_path() ? path.parent_path() : fs::path("."); }

bool Locks(int file, int how) {
    int result = 0;
    do result = flock(file, how);
    while (result != 0 && errno == EINTR);
    return result == 0;
}

// A new file under a name of its own, locked; -1 with errno.
int OpenPart(const fs::path& final, std::string& part) {
    // Long names leave room for the rest.
    const std::string name = final.filename().string().substr(0, 150);
    const std::string stem = (final.parent_path() / name).string() + std::string(mark) + HostName() + "-";
    for (int number = 0;; ++number) {
        part = stem + std::to_string(getpid()) + "-" + std::to_string(number) + std::string(extension);
        const int file = open(part.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (file < 0 && errno == EEXIST) continue;
        if (file < 0) return -1;
        // One that clears up may have come between: then the file has no name any more. Without locks there is none.
        struct stat now = {};
        Locks(file, LOCK_EX);
        if (fstat(file, &now) == 0 && now.st_nlink > 0) return file;
        close(file);
    }
}

// Some file systems share files between machines but not their locks, so that another machine's file has to be old too.
bool IsDead(int file, const std::string& name) {
    constexpr std::time_t day = 24 * 3600;
    struct stat now = {};
    if (fstat(file, &now) != 0 || !S_ISREG(now.st_mode) || !Locks(file, LOCK_EX | LOCK_NB)) return false;
    const bool own = name.find(std::string(mark) + HostName() + "-") != std::string::npos;
    return own || now.st_mtime < std::time(nullptr) - day;
}

}  // namespace

void ClearDeadParts(const std::string& path) {
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(FolderOf(Followed(path)), error)) {
        const std::string name = entry.path().filename().string();
        if (!name.ends_with(extension) || name.find(mark) == std::string::npos) continue;
        const int file = open(entry.path().c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
        if (file < 0) continue;
        if (IsDead(file, name)) unlink(entry.path().c_str());
        close(file);
    }
}

void CheckOutputPath(const std::string& path, bool overwrite) {
    std::error_code error;
    const auto refuse = [](const std::string& line) { throw HostError(ExitCode::Output, line); };
    const fs::path folder = FolderOf(Followed(path));
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
    if (error == AVERROR(EINVAL)) remedy = "no such file holds frames of these times: give another --rate or extension";
    if (error == AVERROR(EPIPE)) remedy = "the program that reads it has ended";
    throw HostError(ExitCode::Output,
                    path + " cannot be written (" + ErrorText(error) + "); " + remedy + "; no half file was kept");
}

PartFile::PartFile(const std::string& path, bool overwrite, Links links)
    : m_name(path),
      m_final(links == Links::Follow ? Followed(path).string() : path),
      m_part(m_final),
      m_overwrite(overwrite) {
    CheckOutputPath(path, overwrite);
    std::error_code error;
    if (links == Links::Follow && fs::exists(m_final, error) && !fs::is_regular_file(m_final, error)) return;
    m_lock = OpenPart(m_final, m_part);
    if (m_lock < 0) ThrowWriteError(m_name, AVERROR(errno));
}

PartFile::~PartFile() {
    if (m_lock < 0) return;
    if (!m_committed) std::remove(m_part.c_str());
    close(m_lock);
}

void PartFile::Write(std::string_view bytes) const {
    const int file = m_lock >= 0 ? m_lock : open(m_part.c_str(), O_WRONLY | O_CLOEXEC);
    int error = file < 0 ? errno : 0;
    while (error == 0 && !bytes.empty()) {
        const ssize_t count = write(file, bytes.data(), bytes.size());
        if (count >= 0)
            bytes.remove_prefix(std::size_t(count));
        else if (errno != EINTR)
            error = errno;
    }
    if (file >= 0 && file != m_lock && close(file) != 0) error = errno;
    if (error != 0) ThrowWriteError(m_name, AVERROR(error));
}

void PartFile::Commit(bool sure) {
    if (m_lock < 0) return;
    if (sure && fsync(m_lock) != 0 && errno != EINVAL) ThrowWriteError(m_name, AVERROR(errno));
    const unsigned flags = m_overwrite ? 0 : RENAME_NOREPLACE;
    int result = renameat2(AT_FDCWD, m_part.c_str(), AT_FDCWD, m_final.c_str(), flags);
    // Some file systems know no flags; the name was free when the run began.
    if (result != 0 && errno == EINVAL) result = std::rename(m_part.c_str(), m_final.c_str());
    if (result != 0) ThrowWriteError(m_name, AVERROR(errno));
    m_committed = true;
}

}  // namespace Nifikral
