#include "host/pages/reference.h"

#include <cstdlib>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "host/base/errors.h"
#include "host/films/example_project.h"
#include "host/films/menu.h"
#include "host/films/slideshow.h"
#include "host/films/title.h"
#include "host/media/part_file.h"
#include "host/pages/gallery_pictures.h"
#include "host/pages/reference_page.h"

namespace Nifikral {
namespace {

namespace fs = std::filesystem;

constexpr int longestSide = 480;

class TemporaryFolder {
 public:
    TemporaryFolder() {
        std::string name = (fs::temp_directory_path() / "nifikral_XXXXXX").string();
        if (!mkdtemp(name.data())) ThrowWriteError(name, AVERROR(errno));
        m_folder = name;
    }
    ~TemporaryFolder() {
        std::error_code error;
        fs::remove_all(m_folder, error);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    std::string File(const std::string& name) const { return (m_folder / name).string(); }

 private:
    fs::path m_folder;
};

std::string Bytes(const std::string& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

// Makes the pictures one after the other in a folder that goes away.
class Artist {
 public:
    Artist(const std::string& photograph, const EffectModule& module)
        : m_module(module), m_shape(WriteReduced(photograph, m_folder.File("photo.png"), longestSide)) {
        WriteReduced(photograph, m_folder.File("large.png"), 2 * longestSide);
        WriteExampleProject({.templateName = exampleMenu, .folder = m_folder.File(exampleMenu)}, module);
    }

    ReferencePage Page() { return {Small(m_folder.File("photo.png")), m_shape.width, m_shape.height, {}}; }

    ReferenceEntry Show(const EffectDetails& effect) {
        const unsigned traits = effect.info.traits;
        if (traits & menu) return ShowMenu(effect);
        if (effect.name == "slide") return ShowSlideshow(effect);
        if (effect.name == "title") return ShowTitle(effect);
        return ShowPhotograph(effect);
    }

 private:
    static constexpr char exampleMenu[] = "menu_common";

    std::string Picture() const { return m_folder.File("whole.jpg"); }
    // The place for the next picture.
    std::string Whole() const {
        fs::remove(Picture());
        return Picture();
    }
    std::string Small(const std::string& file) {
        fs::remove(m_folder.File("small.jpg"));
        WriteReduced(file, m_folder.File("small.jpg"), longestSide);
        return Bytes(m_folder.File("small.jpg"));
    }
    std::string Example(const char* picture) const { return m_folder.File(exampleMenu) + "/" + picture; }

    ReferenceEntry ShowPhotograph(const EffectDetails& effect) {
        const EffectShow show = ShowOf(effect.info, m_shape.width, m_shape.height);
        ReferenceEntry entry{effect, {}, {}, int(show.stills.front().size())};
        for (const auto& requests : show.stills) {
            const std::string file = m_folder.File(std::string("whole") + show.extension);
            fs::remove(file);
            // What moves pixels shows none of them when it is reduced.
            const bool moves = effect.info.category == std::string_view("Geometry");
            MakePicture(m_folder.File(moves ? "large.png" : "photo.png"), requests, file, m_module);
            entry.pictures.push_back(moves ? Small(file) : Bytes(file));
            if (!entry.command.empty()) entry.command += '\n';
            entry.command += ApplyCommand("photo.jpg", std::string("out") + show.extension, requests);
        }
        return entry;
    }

    // At a frame that shows what is typical of it.
    ReferenceEntry ShowMenu(const EffectDetails& effect) {
        const std::string project =
            WriteExampleProject({.templateName = effect.name, .folder = m_folder.File(effect.name), .overwrite = true},
                                m_module)
                .file;
        MenuOptions options{effect.name, project, {}};
        options.film.run.output.path = Whole();
        options.film.run.frames = "110";
        RenderMenu(options, m_module);
        return {effect,
                {Small(Picture())},
                "nifikral init " + effect.name + " project\nnifikral menu " + effect.name +
                    " project/menu.json -o out.mp4"};
    }

    ReferenceEntry ShowSlideshow(const EffectDetails& effect) {
        SlideshowOptions options;
        for (const char* const picture : {"lake.png", "desert.png", "forest.png", "night.png"})
            options.inputs.push_back(Example(picture));
        options.size = "960x540";
        options.film.run.output.path = Whole();
        options.film.run.frames = "363";
        MakeSlideshow(options, m_module);
        return {effect, {Small(Picture())}, "nifikral slideshow pictures -o out.mp4"};
    }

    ReferenceEntry ShowTitle(const EffectDetails& effect) {
        TitleOptions options;
        options.text = "A day at the lake";
        options.inputs = {Example("lake.png")};
        options.run.output.path = Whole();
        PutTitle(options, m_module);
        return {effect, {Small(Picture())}, "nifikral title '" + options.text + "' lake.mp4 out.mp4"};
    }

    TemporaryFolder m_folder;
    const EffectModule& m_module;
    PictureShape m_shape;
};

}  // namespace

void MakeReference(const ReferenceOptions& options, const EffectModule& module) {
    CheckOutputPath(options.page, options.overwrite);
    Artist artist(options.photograph, module);
    ReferencePage page = artist.Page();
    for (const EffectDetails& effect : AllEffects(module)) page.entries.push_back(artist.Show(effect));
    PartFile html(options.page, options.overwrite);
    html.Write(RenderReference(page));
    html.Commit();
}

}  // namespace Nifikral
