#include "host/films/example_project.h"

#include <algorithm>
#include <array>
#include <deque>
#include <filesystem>
#include <span>
#include <sstream>

#include "host/base/errors.h"
#include "host/films/example_pictures.h"
#include "host/films/media_manager.h"
#include "host/films/menu.h"
#include "host/films/menu_pages.h"
#include "host/films/project_reader.h"
#include "host/films/slide_pictures.h"
#include "host/films/text_renderer.h"
#include "host/media/ffmpeg_handles.h"
#include "host/media/part_file.h"

namespace Nifikral {
namespace {

namespace fs = std::filesystem;

constexpr char projectFile[] = "menu.json";

constexpr int width = 1280, height = 720;
constexpr std::size_t placedPerPage = 20;

// Comments are allowed in a project. This one places everything by itself.
constexpr char placedSources[] = R"(
  // The pictures drift to their places within four seconds; players repeat what follows. The balloon comes after that
  // and has gone before the end, so that the loop closes.
  "loopStart": 4,

  "sourcePath": "background.png",

  // One entry for each picture, in every list.
  "additionSourcePaths": ["balloon.png", "lake.png", "desert.png", "forest.png", "night.png"],
  "captions": ["", "The lake", "The desert", "The forest", "The night"],
  "additionSourceSizes": [[100, 140], [256, 144], [256, 144], [256, 144], [256, 144]],
  "maskPaths": ["", "mask.png", "mask.png", "mask.png", "mask.png"],
  "startPositions": [[-620, 236], [28, 440], [314, 440], [600, 440], [886, 440]],
  "endPositions": [[1400, 236], [68, 440], [364, 440], [660, 440], [956, 440]],
  "moveFormulas": [[0, 0], [0, 0], [0, 0], [0, 0], [0, 0]],
  "moveSpeeds": [5, 1, 1, 1, 1],
  "startTrans": [255, 0, 0, 0, 0],
  "endTrans": [255, 255, 255, 255, 255],
  "fadeSpeeds": [0, 6, 5, 4, 3],
)";
// For templates that have a background of their own and place the pictures; only the texts want places.
constexpr char arrangedSources[] = R"(
  // The template places them; "sourcePath", "additionSourceSizes" and "startPositions" would say otherwise.
  "additionSourcePaths": )";
constexpr char arrangedPictures[] = R"(["lake.png", "desert.png", "forest.png", "night.png", "background.png"])";
constexpr char arrangedCaptions[] =
    R"(  "captions": ["The lake", "The desert", "The forest", "The night", "The evening"],
)";

// A text of an example; all that is left out is as the template's style has it.
struct ExampleText {
    const char* text;
    std::array<int, 4> box = {};  // none: the style's
};

constexpr char usualTitle[] = "Summer 2026";
constexpr ExampleText usualTexts[] = {{usualTitle}, {"Four places, and the way between them"}};
constexpr ExampleText shortTexts[] = {{usualTitle}, {"Four places"}};
constexpr ExampleText chapterTitles[] = {{usualTitle},
                                         {"The lake", {440, 246, 700, 64}},
                                         {"The desert", {200, 376, 700, 64}},
                                         {"The night", {580, 506, 560, 64}}};
constexpr ExampleText instructions[] = {
    {"How to watch"}, {"Arrows choose a chapter,"}, {"Enter plays it,"}, {"Menu leads back here."}};

std::span<const ExampleText> ExamplesOf(const std::string& templateName) {
    if (templateName == "menu_layeredtitles") return chapterTitles;
    if (templateName == "menu_videowall" || templateName == "menu_resizingpanels") return shortTexts;
    return IsInstructionMenu(templateName) ? std::span<const ExampleText>(instructions) : usualTexts;
}

bool HasNames(const std::string& templateName) {
    return templateName != "menu_layeredtitles" && !IsInstructionMenu(templateName);
}

Mood MoodOf(const InitOptions& options) { return FindMood(options.mood).value_or(Mood::Own); }

Json TextOf(const InitOptions& options, std::size_t index, const ExampleText& example) {
    Film film;
    film.width = width;
    film.height = height;
    const TemplateStyle style = StyleOf(options.templateName, MoodOf(options));
    MenuText text = StyledMenuText(style, film, index);
    text.styled.text = example.text;
    if (example.box != ExampleText{}.box) text.box = example.box;
    return MenuTextJson(text);
}

// An object over two lines.
std::string TextInProject(const Json& text) {
    std::string lines;
    for (const auto& [key, value] : text.items()) {
        lines += lines.empty() ? "    {" : key == "size" ? ",\n     " : ", ";
        lines += "\"" + key + "\": " + value.dump();
    }
    return lines + "}";
}

// With the whole style of each text, so that it can be changed.
std::string TextsOf(const InitOptions& options) {
    std::string list;
    const std::span<const ExampleText> examples = ExamplesOf(options.templateName);
    for (std::size_t i = 0; i < examples.size(); ++i) {
        // What is said of the example's pictures does not go with others; how to use a menu does.
        if (i > 0 && !options.pictures.empty() && !IsInstructionMenu(options.templateName)) break;
        ExampleText example = examples[i];
        if (i == 0 && !options.title.empty()) example.text = options.title.c_str();
        list += (list.empty() ? "" : ",\n") + TextInProject(TextOf(options, i, example));
    }
    return list + "\n";
}

std::string ProjectOf(const InitOptions& options, const std::string& sources, std::size_t seconds) {
    std::ostringstream project;
    project << "{\n  \"template\": \"" << options.templateName
            << "\",\n  \"frameRate\": 25,\n  \"duration\": " << seconds << ",\n  \"width\": " << width
            << ",\n  \"height\": " << height << ",\n"
            << (options.mood.empty() ? "" : "  \"mood\": \"" + options.mood + "\",\n") << sources
            << "\n  \"textInfos\": [\n"
            << TextsOf(options) << "  ]\n}\n";
    return project.str();
}

// From the project's folder, so that both can be moved together; whole where a link to that folder leads elsewhere.
std::string NameInProject(const std::string& picture, const fs::path& folder) {
    const fs::path base = (fs::absolute(folder) / "").lexically_normal();
    std::error_code error;
    const bool isLinked = fs::weakly_canonical(base, error) / "" != base;
    const fs::path whole = fs::canonical(picture), relative = isLinked ? whole : whole.lexically_relative(base);
    std::string name = relative.string();
    if (FirstInvalidByte(name))
        throw HostError(ExitCode::Input, picture + ": its name is no UTF-8, which a project needs; rename it");
    return name;
}

Json NamesInProject(const std::vector<Slide>& pictures, const fs::path& folder) {
    Json names = Json::array();
    for (const Slide& picture : pictures) names.push_back(NameInProject(picture.path, folder));
    return names;
}

struct Box {
    int x, y, width, height;
};

// Where pictures stand that share the part of the menu below the title in rows: those of a page of `count`.
std::vector<Box> Rows(int count) {
    constexpr Box area{64, 216, 1152, 448};
    constexpr int gap = 24;
    const auto cell = [&](int columns) {
        const int rows = (count + columns - 1) / columns;
        return std::pair((area.width - gap * (columns - 1)) / columns, (area.height - gap * (rows - 1)) / rows);
    };
    // The number of columns that gives most room to a picture of 16:9.
    int columns = 1;
    const auto room = [&](int tried) { return std::min(cell(tried).first * 9, cell(tried).second * 16); };
    for (int tried = 2; tried <= count; ++tried)
        if (room(tried) > room(columns)) columns = tried;
    const auto [across, down] = cell(columns);
    std::vector<Box> boxes;
    for (int i = 0; i < count; ++i) {
        const int row = i / columns, inRow = std::min(columns, count - row * columns);
        const int free = area.width - inRow * (across + gap) + gap;
        boxes.push_back({area.x + free / 2 + i % columns * (across + gap), area.y + row * (down + gap), across, down});
    }
    return boxes;
}

// The largest one of a picture's shape in the middle of a box.
Box Fitted(const std::string& picture, const Box& box, PictureStore* store) {
    MediaManager manager(store);
    AVBased::IAVSource* const source = manager.OpenSource(PathInList(picture).c_str(), "");
    AVBased::IRawVideoFrame* const frame = source ? source->ReadFrame() : nullptr;
    unsigned across = unsigned(box.width), down = unsigned(box.height);
    if (frame) {
        frame->GetDimension(&across, &down);
        frame->Free();
    }
    if (source) source->Free();
    TakeFiledMessage();
    const double scale = std::min(box.width / double(across), box.height / double(down));
    const auto side = [&](unsigned length) { return std::max(int(length * scale), 1); };
    return {box.x + (box.width - side(across)) / 2, box.y + (box.height - side(down)) / 2, side(across), side(down)};
}

// For the template that places nothing by itself: pictures that come from the left into rows.
std::string PlacedSources(const std::vector<Slide>& pictures, const fs::path& folder, PictureStore* store) {
    const std::vector<Box> boxes = Rows(int(std::min(pictures.size(), placedPerPage)));
    Json sizes, starts, ends, formulas, speeds, invisible, opaque, fades;
    for (std::size_t i = 0; i < pictures.size(); ++i) {
        const Box box = Fitted(pictures[i].path, boxes[i % placedPerPage], store);
        MenuSource source;
        ComeIn(source, box.x, box.y, int(i % placedPerPage));
        sizes.push_back({box.width, box.height});
        starts.push_back(source.start);
        ends.push_back(source.end);
        formulas.push_back({0, 0});
        speeds.push_back(source.speed);
        invisible.push_back(source.startTrans);
        opaque.push_back(source.endTrans);
        fades.push_back(source.fadeSpeed);
    }
    std::ostringstream sources;
    sources << R"(
  // The pictures drift to their places within four seconds; players repeat what follows.
  "loopStart": 4,

  "sourcePath": "background.png",
)";
    if (pictures.size() > placedPerPage) sources << "  \"perPage\": " << placedPerPage << ",\n";
    sources << "\n  // One entry for each picture, in every list.\n";
    for (const auto& [key, list] : {std::pair("additionSourcePaths", NamesInProject(pictures, folder)),
                                    {"additionSourceSizes", sizes},
                                    {"startPositions", starts},
                                    {"endPositions", ends},
                                    {"moveFormulas", formulas},
                                    {"moveSpeeds", speeds},
                                    {"startTrans", invisible},
                                    {"endTrans", opaque},
                                    {"fadeSpeeds", fades}})
        sources << "  \"" << key << "\": " << list << ",\n";
    return sources.str();
}

void MakeFolder(const fs::path& folder) {
    std::error_code error;
    fs::create_directories(folder, error);
    if (error) ThrowWriteError(folder.string(), AVERROR(error.value()));
}

}  // namespace

ExampleProject WriteExampleProject(const InitOptions& options, const EffectModule& module) {
    RequireMenuTemplate(options.templateName, module);
    RequireUtf8("--title", options.title);
    if (!options.mood.empty() && !FindMood(options.mood))
        throw HostError(ExitCode::Usage, "--mood " + options.mood + ": give own, light or dark");
    if (const std::size_t at = options.title.find_first_of(";\\"); at != std::string::npos)
        throw HostError(ExitCode::Usage, std::string("--title holds '") + options.title[at] +
                                             "', which menus cannot carry; choose another text");
    const fs::path folder = options.folder.empty() ? options.templateName : options.folder;
    const bool placed = IsPlacedMenu(options.templateName);
    std::vector<Slide> pictures;
    if (!options.pictures.empty()) pictures = ReadableSlides(FindSlides(options.pictures), {.store = options.store});

    std::vector<ExamplePicture> files;
    if (pictures.empty() || placed) files = DrawExamplePictures(MoodOf(options), !pictures.empty());
    std::string sources = placed ? placedSources : std::string(arrangedSources) + arrangedPictures + ",\n";
    // Of templates that show one picture at a time, the texts say enough.
    if (!placed && HasNames(options.templateName)) sources += arrangedCaptions;
    if (!pictures.empty())
        sources = placed ? PlacedSources(pictures, folder, options.store)
                         : arrangedSources + NamesInProject(pictures, folder).dump() + ",\n";
    const std::size_t perPage = placed ? placedPerPage : std::size_t(UsualPerPage(options.templateName));
    const bool hasPages = perPage > 0 && pictures.size() > perPage;
    // Templates that show one after the other need time for each.
    const std::size_t seconds = placed ? 16 : std::max<std::size_t>(12, 2 * (hasPages ? perPage : pictures.size()));
    files.push_back({projectFile, ProjectOf(options, sources, seconds)});
    MakeFolder(folder);
    // All stand under their names or none does.
    std::deque<PartFile> parts;
    for (const ExamplePicture& file : files)
        parts.emplace_back((folder / file.file).string(), options.overwrite).Write(file.png);
    for (PartFile& part : parts) part.Commit();
    return {(folder / projectFile).string(), hasPages};
}

}  // namespace Nifikral
