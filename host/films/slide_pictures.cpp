#include "host/films/slide_pictures.h"

#include <tbb/parallel_for.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <mutex>

#include "host/base/errors.h"
#include "host/base/interruption.h"
#include "host/base/log.h"
#include "host/base/natural_order.h"
#include "host/base/progress.h"
#include "host/catalogue/effect_module.h"
#include "host/films/media_manager.h"

namespace Nifikral {
namespace {

namespace fs = std::filesystem;

// Kinds that no decoder may know are among them: such a picture is reported and not passed over.
constexpr std::string_view extensions[] = {".jpg",  ".jpeg", ".jpe",  ".jfif", ".png",  ".apng", ".gif", ".bmp", ".tif",
                                           ".tiff", ".webp", ".avif", ".heic", ".heif", ".jxl",  ".jp2", ".j2k", ".tga",
                                           ".ppm",  ".pgm",  ".pbm",  ".pnm",  ".pam",  ".pcx",  ".sgi", ".ras", ".xbm",
                                           ".xpm",  ".dds",  ".exr",  ".hdr",  ".psd",  ".qoi",  ".ico", ".dpx"};

bool IsPictureName(const fs::path& path) {
    std::string extension = path.extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return std::tolower(c); });
    return std::find(std::begin(extensions), std::end(extensions), extension) != std::end(extensions);
}

std::vector<std::string> PicturesIn(const std::string& folder) {
    std::error_code error;
    std::vector<std::string> names;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, error)) {
        const std::string name = entry.path().filename().string();
        std::error_code unreadable;
        // Programs keep previews and notes under hidden names.
        const bool hidden = name.starts_with('.');
        if (!hidden && IsPictureName(entry.path()) && !entry.is_directory(unreadable))
            names.push_back(name);
        else
            PrintDetail(entry.path().string() + " is no picture by its name; it is left out");
    }
    if (error) throw HostError(ExitCode::Input, folder + " cannot be read (" + error.message() + "); make it readable");
    if (names.empty())
        throw HostError(ExitCode::Input,
                        folder + " holds no pictures; name a folder with .jpg, .png or other picture files");
    std::sort(names.begin(), names.end(), ComesBefore);
    for (std::string& name : names) name = (fs::path(folder) / name).string();
    return names;
}

// What hinders a picture, "" for nothing.
std::string TryPicture(const std::string& path) {
    MediaManager manager;
    if (AVBased::IAVSource* const source = manager.OpenSource(PathInList(path).c_str(), AVBased::importerImage)) {
        source->Free();
        TakeFiledMessage();
        return {};
    }
    return TakeFiledMessage().value_or(path + " cannot be read");
}

}  // namespace

std::vector<std::string> FindPictures(const std::vector<std::string>& inputs) {
    std::vector<std::string> pictures;
    for (const std::string& input : inputs) {
        std::error_code error;
        if (!fs::exists(input, error))
            throw HostError(ExitCode::Input, input + ": no such file or folder; check the name");
        if (!fs::is_directory(input, error)) {
            pictures.push_back(input);
            continue;
        }
        const std::vector<std::string> inside = PicturesIn(input);
        pictures.insert(pictures.end(), inside.begin(), inside.end());
    }
    return pictures;
}

std::vector<std::string> ReadablePictures(const std::vector<std::string>& pictures, bool strict) {
    std::vector<std::string> faults(pictures.size());
    {
        Progress progress((long long)pictures.size(), "picture", "checking ");
        std::mutex mutex;
        tbb::parallel_for(std::size_t(0), pictures.size(), [&](std::size_t i) {
            if (IsInterrupted()) return;
            faults[i] = TryPicture(pictures[i]);
            const std::lock_guard lock(mutex);
            progress.Advance();
        });
    }
    ThrowIfInterrupted();
    std::vector<std::string> good;
    std::string lines;
    for (std::size_t i = 0; i < pictures.size(); ++i) {
        if (faults[i].empty()) {
            good.push_back(pictures[i]);
            continue;
        }
        lines += faults[i] + "\n";
        if (!strict) PrintWarning(faults[i] + " (skipped)");
    }
    if (strict && !lines.empty()) throw HostError(ExitCode::Input, lines);
    if (good.empty())
        throw HostError(ExitCode::Input, "none of the pictures can be read (" + std::to_string(pictures.size()) +
                                             " tried); name others");
    return good;
}

}  // namespace Nifikral
