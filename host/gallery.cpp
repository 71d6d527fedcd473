#include "host/gallery.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>

#include "host/apply.h"
#include "host/catalogue.h"
#include "host/effect_request.h"
#include "host/errors.h"
#include "host/gallery_page.h"
#include "host/gallery_settings.h"
#include "host/part_file.h"
#include "host/shell_word.h"

namespace Nifikral {
namespace {

namespace fs = std::filesystem;

constexpr char photographFile[] = "photo.png";
constexpr int longestSide = 960;

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

// Reduced, so that effects that work on single pixels show and the page stays light.
PictureShape PageShape(PictureShape shape) {
    const int longer = std::max(shape.width, shape.height);
    if (longer <= longestSide) return shape;
    const auto reduced = [&](int side) { return int(std::max(1LL, (2LL * side * longestSide / longer + 1) / 2)); };
    shape.width = reduced(shape.width);
    shape.height = reduced(shape.height);
    return shape;
}

PictureShape WritePhotograph(const std::string& from, const std::string& to) {
    MediaSource source(from, {.range = {0, 0}, .audio = false});
    OutputTraits traits = TraitsOf(source, AV_PIX_FMT_RGB24);
    traits.source = PageShape(traits.source);
    traits.metadata = nullptr;
    OutputOptions output;
    output.path = to;
    const std::unique_ptr<MediaSink> sink = OpenSink(output, traits, false);
    std::optional<SourceStep> step = source.Next();
    FramePtr& frame = step->frame;
    if (HasAlpha(ShapeOf(*frame).format)) {
        PictureShape packed = ShapeOf(*frame);
        packed.format = AV_PIX_FMT_BGRA;
        PictureConverter(packed).Convert(frame);
        LayOverBlack(*frame);
    }
    PictureConverter(sink->Shape()).Convert(frame);
    sink->Write(std::move(frame), 0);
    sink->Finish();
    return sink->Shape();
}

// All parameters with the values that the effect itself tells once the settings are in it.
std::vector<GalleryParameter> Parameters(const EffectRequest& request, const EffectModule& module) {
    const EffectPtr effect = module.Create(request.effect);
    for (const ParameterSetting& setting : request.settings)
        effect->SetProperty(setting.property.c_str(), setting.value.At(0, 1).c_str());
    std::vector<GalleryParameter> parameters;
    for (const PropertyInfo& property : Properties(*effect)) {
        if (property.name == "duration") continue;
        const ParameterInfo* const info = FindParameter(request.effect, property.name);
        parameters.push_back({property.name, property.defaultText, info ? info->meaning : "", info ? info->unit : ""});
    }
    return parameters;
}

}  // namespace

void MakeGallery(const GalleryOptions& options, const EffectModule& module) {
    const fs::path files = FilesFolder(options.page);
    CheckPlaces(options, files);
    const std::string folder = files.filename().string() + "/";
    const PartFolder part(files);
    const PictureShape shape = WritePhotograph(options.photograph, part.File(photographFile));
    GalleryPage page{
        fs::path(options.photograph).filename().string(), folder + photographFile, shape.width, shape.height, {}};
    for (const EffectInfo& info : Catalogue()) {
        if ((info.traits & generator) || !module.Create(info.name)) continue;
        const GallerySettings settings = SettingsForGallery(info.name, shape.width, shape.height);
        const std::string request = info.name + (settings.text.empty() ? "" : ":" + settings.text);
        const std::string file = std::string(info.name) + ".jpg";
        ApplyOptions apply;
        apply.input = part.File(photographFile);
        apply.effects.assign(std::size_t(settings.times), request);
        apply.run.output.path = part.File(file);
        Apply(apply, module);
        std::string command = "nifikral apply " + ShellWord(page.photographFile) + " " + file;
        for (const std::string& effect : apply.effects) command += " " + effect;
        page.pictures.push_back({info.name, info.summary, folder + file, settings.times,
                                 (info.traits & changesAlpha) != 0,
                                 Parameters(ParseEffectRequest(request, module), module), command});
    }
    PartFile html(options.page, options.overwrite);
    html.Write(RenderGallery(page));
    part.Commit();
    html.Commit();
}

}  // namespace Nifikral
