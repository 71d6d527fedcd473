#pragma once

#include <stdlib.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <string>

namespace Nifikral::Fuzzing {

/// A folder with the picture "p.ppm" of 8x6 pixels, for as long as the program runs.
class TemporaryFolder {
 public:
    TemporaryFolder() {
        m_path = std::filesystem::temp_directory_path() / "nifikral-fuzz-XXXXXX";
        if (!mkdtemp(m_path.data())) throw std::filesystem::filesystem_error(m_path, {errno, std::generic_category()});
        std::string picture = "P6 8 6 255\n";
        for (int i = 0; i < 8 * 6 * 3; ++i) picture += char(i);
        Write("p.ppm", picture);
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }

    const std::string& Path() const { return m_path; }
    /// Returns the file's path.
    std::string Write(const std::string& name, const std::string& text) const {
        std::string path = m_path + "/" + name;
        std::ofstream(path, std::ios::binary) << text;
        return path;
    }

 private:
    std::string m_path;
};

}  // namespace Nifikral::Fuzzing
