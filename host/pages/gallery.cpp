#include "host/pages/gallery.h"

#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "host/base/errors.h"
#include "host/catalogue/catalogue.h"
#include "host/media/part_file.h"
#include "host/pages/gallery_page.h"
#include "host/pages/gallery_pictures.h"
#include "host/run/effect_check.h"

namespace Nifikral {
namespace {

namespace fs = std::filesystem;

constexpr char photographFile[] = "photo.png", standstillFile[] = "photo.mp4";
// Effects that work on single pixels show, and the page stays light.
constexpr int longestSide = 960, longestSideOfFilms = 480;

// The page's pictures while they are made; they move into their folder when all are there.
class PartFolder {
 public:
    explicit PartFolder(const fs::path& final)
        : m_final(final), m_part(final.string() + "." + std::to_string(getpid()) + ".part") {
        std::error_code error;
        if (!fs::create_directory(m_part, error)) Refuse(error);
    }
    ~PartFolder() {
        std::error_code error;
        fs::remove_all(m_part, error);
    }
    PartFolder(const PartFolder&) = delete;
    PartFolder& operator=(const PartFolder&) = delete;

    std::string File(const std::string& name) const { return (m_part / name).string(); }

    // File by file, so that whatever else lies in the folder stays.
    void Commit() const {
        std::error_code error;
        fs::create_directory(m_final, error);
        if (error) Refuse(error);
        for (const fs::directory_entry& entry : fs::directory_iterator(m_part)) {
            fs::rename(entry.path(), m_final / entry.path().filename(), error);
            if (error) Refuse(error);
        }
    }

 private:
    [[noreturn]] void Refuse(const std::error_code& error) const {
        ThrowWriteError(m_final.string(), AVERROR(error ? error.value() : EEXIST));
    }

    fs::path m_final, m_part;
};

fs::path FilesFolder(const std::string& page) {
    const fs::path path(page);
    return path.parent_path() / (path.stem().string() + "_files");
}

void CheckPlaces(const GalleryOptions& options, const fs::path& files) {
    if (options.page == "-" || av_filename_number_test(options.page.c_str()))
        throw HostError(ExitCode::Usage,
                        options.page + " cannot name a page with a folder of pictures; use a name like gallery.html");
    CheckOutputPath(options.page, options.overwrite);
    std::error_code error;
    if (!fs::exists(files, error)) return;
    if (!fs::is_directory(files, error))
        throw HostError(ExitCode::Output, files.string() + ", the folder for the pictures, is no folder; name another");
    if (!options.overwrite) throw HostError(ExitCode::Output, files.string() + " exists already; -y overwrites it");
    if (fs::equivalent(fs::path(options.photograph).parent_path() / ".", files, error))
        throw HostError(ExitCode::Usage,
                        options.photograph + " lies among the gallery's own pictures; copy it elsewhere first");
}

// All parameters with the values that the effect itself reports once the settings are in it.
std::vector<GalleryParameter> Parameters(const EffectRequest& request, const PictureShape& shape,
                                         const EffectModule& module) {
    const EffectPtr effect = module.Create(request.effect);
    for (const ParameterSetting& setting : request.settings)
        RequireAcceptable(*effect, {setting.property, setting.value.On({shape.width, shape.height})});
    std::vector<GalleryParameter> parameters;
    for (const PropertyInfo& property : Properties(*effect)) {
        if (property.name == "duration") continue;
        const ParameterInfo* const info = FindParameter(request.effect, property.name);
        parameters.push_back({property.name, property.defaultText, info ? info->meaning : "", info ? info->unit : ""});
    }
    return parameters;
}

// Makes an effect's pictures and its film in the folder.
GalleryPicture Shown(const EffectInfo& info, const PartFolder& part, const std::string& folder, PictureShape shape,
                     const EffectModule& module) {
    const EffectShow show = ShowOf(info, shape.width, shape.height);
    const std::vector<std::string>& first = show.stills.front();
    GalleryPicture picture{info.name,
                           info.summary,
                           {},
                           {},
                           int(first.size()),
                           (info.traits & changesAlpha) != 0,
                           Parameters(ParseEffectRequest(first.front(), module), shape, module),
                           {}};
    const auto make = [&](const char* from, const std::vector<std::string>& requests, const std::string& file) {
        MakePicture(part.File(from), requests, part.File(file), module);
        if (!picture.commands.empty()) picture.commands += '\n';
        picture.commands += ApplyCommand(folder + from, file, requests);
        return folder + file;
    };
    for (const auto& requests : show.stills) {
        std::string file = info.name;
        if (show.stills.size() > 1) file.append("_").append(std::to_string(picture.stills.size() + 1));
        picture.stills.push_back(make(photographFile, requests, file + show.extension));
    }
    if (!show.film.empty()) picture.film = make(standstillFile, show.film, std::string(info.name) + ".mp4");
    return picture;
}

}  // namespace

void MakeGallery(const GalleryOptions& options, const EffectModule& module) {
    const fs::path files = FilesFolder(options.page);
    CheckPlaces(options, files);
    const std::string folder = files.filename().string() + "/";
    const PartFolder part(files);
    const PictureShape shape = WriteReduced(options.photograph, part.File(photographFile), longestSide);
    WriteStandstill(part.File(photographFile), shape, longestSideOfFilms, part.File(standstillFile), module);
    GalleryPage page{
        fs::path(options.photograph).filename().string(), folder + photographFile, shape.width, shape.height, {}};
    for (const EffectInfo& info : Catalogue())
        if (!(info.traits & generator) && module.Create(info.name))
            page.pictures.push_back(Shown(info, part, folder, shape, module));
    PartFile html(options.page, options.overwrite);
    html.Write(RenderGallery(page));
    part.Commit();
    html.Commit();
}

}  // namespace Nifikral
