#include "host/studio/studio_folder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "host/base/errors.h"
#include "host/media/part_file.h"
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

HeldPath::HeldPath(HeldPath&& other) noexcept : m_descriptor(std::exchange(other.m_descriptor, -1)) {}

HeldPath::~HeldPath() {
    if (m_descriptor >= 0) close(m_descriptor);
}

fs::path HeldPath::Place() const {
    std::error_code error;
    return fs::read_symlink(Path(), error);
}

StudioFolder::StudioFolder(const std::string& path) {
    std::error_code error;
    m_root = fs::canonical(path.empty() ? "." : path, error);
    if (!error) fs::current_path(m_root, error);
    if (error) throw HostError(ExitCode::Input, path + " cannot be entered (" + error.message() + "); name a folder");
    m_held.emplace(open(".", O_PATH | O_CLOEXEC));
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

HeldPath StudioFolder::Hold(const std::string& path) const {
    struct stat own = {};
    if (stat(m_held->Path().c_str(), &own) != 0 || own.st_nlink == 0)
        throw WebError(404, m_root.string() + " is gone; bring it back and start the studio there again");
    HeldPath held(open(path.c_str(), O_PATH | O_CLOEXEC));
    if (!held.IsOpen())
        throw WebError(404, path + (errno == EMFILE || errno == ENFILE
                                        ? " cannot be opened: too many files are open; ask for less at once"
                                        : " is not there; it was moved or deleted"));
    const fs::path root = m_held->Place(), place = held.Place();
    if (std::mismatch(root.begin(), root.end(), place.begin(), place.end()).first != root.end())
        throw WebError(403, path + " leads out of the studio's folder");
    return held;
}

void StudioFolder::Write(const std::string& path, const std::string& text) const {
    const fs::path own = Plain(path);
    std::error_code error;
    // A link within the folder is followed.
    const bool link = fs::is_symlink(own, error);
    const fs::path final = link ? Hold(own.string()).Place() : own;
    const HeldPath folder = Hold(final.has_parent_path() ? final.parent_path().string() : ".");
    try {
        PartFile file((fs::path(folder.Path()) / final.filename()).string(), true, PartFile::Links::Replace);
        file.Write(text);
        file.Commit();
    } catch (const HostError& fault) {
        std::string line = fault.what();
        if (const std::size_t at = line.find(folder.Path()); at != std::string::npos)
            line.replace(at, folder.Path().size(), folder.Place().string());
        throw HostError(fault.Code(), line);
    }
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
