#pragma once

#include <string>
#include <string_view>

namespace Nifikral {

/// Throws an output error when a file of this name could not be made: no such folder, a folder itself, or there is one
/// already and `overwrite` is not set.
void CheckOutputPath(const std::string& path, bool overwrite);

/// Throws an output error for a failed write; `error` is FFmpeg's or a negative errno.
[[noreturn]] void ThrowWriteError(const std::string& path, int error);

/// Removes the part files in an output's folder that no running program owns: what a kill or a crash has left there.
void ClearDeadParts(const std::string& path);

/// A file that stands under its final name only when it is complete: until Commit it is a part file beside it, which
/// goes away with this object. A link to a file is followed, or with Links::Replace becomes the file. Something that is
/// no regular file (a device) is written directly.
class PartFile {
 public:
    enum class Links { Follow, Replace };

    PartFile(const std::string& path, bool overwrite, Links links = Links::Follow);
    ~PartFile();
    PartFile(const PartFile&) = delete;
    PartFile& operator=(const PartFile&) = delete;

    const std::string& Path() const { return m_part; }
    /// Appends bytes. Throws an output error.
    void Write(std::string_view bytes) const;
    /// Gives the file its name, once it is on the disk for sure. Without `sure`, a loss of power may leave it empty.
    void Commit(bool sure = true);

 private:
    std::string m_name, m_final, m_part;
    bool m_overwrite, m_committed = false;
    int m_lock = -1;  // the open part file, whose lock says that it is alive; else -1
};

}  // namespace Nifikral
