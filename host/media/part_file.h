#pragma once

#include <string>
#include <string_view>

namespace Nifikral {

/// Throws an output error when a file of this name could not be made: no such folder, a folder itself, or there is one
/// already and `overwrite` is not set.
void CheckOutputPath(const std::string& path, bool overwrite);

/// Throws an output error for a failed write; `error` is FFmpeg's or a negative errno.
[[noreturn]] void ThrowWriteError(const std::string& path, int error);

/// A file that stands under its final name only when it is complete: until Commit it is a part file beside it, which
/// goes away with this object. Something that is no regular file (a device) is written directly.
class PartFile {
 public:
    PartFile(const std::string& path, bool overwrite);
    ~PartFile();
    PartFile(const PartFile&) = delete;
    PartFile& operator=(const PartFile&) = delete;

    const std::string& Path() const { return m_part; }
    const std::string& FinalPath() const { return m_final; }
    /// Makes `bytes` the whole content. Throws an output error.
    void Write(std::string_view bytes) const;
    void Commit();

 private:
    std::string m_final, m_part;
    bool m_overwrite, m_direct, m_committed = false;
};

}  // namespace Nifikral
