#include "host/studio/studio_folder.h"

#include "host/base/errors.h"
#include "host/studio/web_message.h"

namespace Nifikral {
namespace fs = std::filesystem;
namespace {

// As a path of this program; "" is the folder itself. Refuses what leads out by its words alone.
std::string Plain(const std::string& path) {
    const auto refuse = [&](int status, const char* what) {
        throw WebError(status, "\"" + path.substr(0, path.find('\0')) + "\" " + what);
    };
    if (path.find('\0') != std::string::npos) refuse(400, "is no path; it holds a character 0");
    if (path.size() > 4000) refuse(400, "is too long for a path");
    if (path.starts_with('/')) refuse(403, "is not within the studio's folder; give a path relative to it");
    for (const fs::path& part : fs::path(path))
        if (part == "..") refuse(403, "leads upwards; give a path within the studio's folder");
    if (path.empty()) return ".";
    // A hyphen would begin an option, and a scheme an address.
    const bool taken = path.starts_with('-') || path.starts_with('@') || path.find(':') != std::string::npos;
    return (taken ? "./" : "") + path;
}

}  // namespace

StudioFolder::StudioFolder(const std::string& path) {
    std::error_code error;
    m_root = fs::canonical(path.empty() ? "." : path, error);
    if (!error) fs::current_path(m_root, error);
    if (error) throw HostError(ExitCode::Input, path + " cannot be entered (" + error.message() + "); name a folder");
}

bool StudioFolder::Holds(const fs::path& whole) const {
    const auto [root, part] = std::mismatch(m_root.begin(), m_root.end(), whole.begin(), whole.end());
    return root == m_root.end();
}

std::string StudioFolder::Existing(const std::string& path) const {
    std::string plain = Plain(path);
    RequireWithin(plain);
    return plain;
}

std::string StudioFolder::File(const std::string& path) const {
    if (path.empty()) throw WebError(400, "the request names no file; give its path");
    std::string plain = Existing(path);
    std::error_code error;
    if (!fs::is_regular_file(plain, error)) throw WebError(404, path + " is no file");
    return plain;
}

void StudioFolder::RequireWithin(const std::string& path) const {
    std::error_code error;
    const fs::path whole = fs::canonical(path, error);
    if (error) throw WebError(404, (path == "." ? m_root.string() : path) + " is not there; it was moved or deleted");
    if (!Holds(whole)) throw WebError(403, path + " leads out of the studio's folder");
}

std::string StudioFolder::Writable(const std::string& path) const {
    std::string plain = Plain(path);
    const fs::path name = fs::path(plain).filename();
    if (path.empty() || name.empty() || name == ".") throw WebError(400, "\"" + path + "\" names no file");
    std::error_code error;
    if (fs::symlink_status(plain, error).type() != fs::file_type::not_found) return Existing(path);
    const std::string folder = fs::path(plain).parent_path().string();
    Existing(folder == "." ? "" : folder);
    return plain;
}

}  // namespace Nifikral
