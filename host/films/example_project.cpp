#include "host/films/example_project.h"

#include <algorithm>
#include <deque>
#include <filesystem>

#include "host/base/errors.h"
#include "host/films/example_pictures.h"
#include "host/films/menu.h"
#include "host/media/ffmpeg_handles.h"
#include "host/media/part_file.h"

namespace Nifikral {
namespace {

namespace fs = std::filesystem;

constexpr char projectFile[] = "menu.json";

// Behind the template's name. Comments are allowed in a project. This one places everything by itself.
constexpr char placedProject[] = R"(",
  "frameRate": 25,
  "duration": 12,
  "width": 1280,
  "height": 720,

  // The pictures come in within four seconds; players repeat what follows.
  "loopStart": 4,

  "sourcePath": "background.png",

  // One entry for each picture, in every list.
  "additionSourcePaths": ["balloon.png", "lake.png", "desert.png", "forest.png", "night.png"],
  "additionSourceSizes": [[100, 140], [256, 144], [256, 144], [256, 144], [256, 144]],
  "maskPaths": ["", "mask.png", "mask.png", "mask.png", "mask.png"],
  "startPositions": [[760, 380], [-1196, 440], [-750, 440], [-304, 440], [142, 440]],
  "endPositions": [[1400, -200], [68, 440], [364, 440], [660, 440], [956, 440]],
  "moveFormulas": [[0, -1], [0, 0], [0, 0], [0, 0], [0, 0]],
  "moveSpeeds": [1, 16, 16, 16, 16],
  "startTrans": [255, 0, 0, 0, 0],
  "endTrans": [255, 255, 255, 255, 255],
  "fadeSpeeds": [0, 4, 4, 4, 4],

  "textInfos": [
    {"text": "Summer 2026", "face": "DejaVu Serif", "fontstyle": "bold shadow", "size": 76, "color": "#fff4dc",
     "box": [64, 56]},
    {"text": "Four places, and the way between them", "face": "DejaVu Sans", "fontstyle": "italic shadow", "size": 28,
     "color": "#ffe0b8", "box": [70, 158], "show": [25]},
    {"text": "The lake", "face": "DejaVu Sans", "fontstyle": "bold outline", "size": 26, "color": "#ffffff",
     "box": [-1184, 596], "move": {"end": [80, 596], "speed": 16}},
    {"text": "The desert", "face": "DejaVu Sans", "fontstyle": "bold outline", "size": 26, "color": "#ffffff",
     "box": [-738, 596], "move": {"end": [376, 596], "speed": 16}},
    {"text": "The forest", "face": "DejaVu Sans", "fontstyle": "bold outline", "size": 26, "color": "#ffffff",
     "box": [-292, 596], "move": {"end": [672, 596], "speed": 16}},
    {"text": "The night", "face": "DejaVu Sans", "fontstyle": "bold outline", "size": 26, "color": "#ffffff",
     "box": [154, 596], "move": {"end": [968, 596], "speed": 16}}
  ]
}
)";

// For templates that have a background of their own and place the pictures; only the texts want places.
constexpr char arrangedProject[] = R"(",
  "frameRate": 25,
  "duration": 12,
  "width": 1280,
  "height": 720,

  // The template places them; "sourcePath", "additionSourceSizes" and "startPositions" would say otherwise.
  "additionSourcePaths": ["lake.png", "desert.png", "forest.png", "night.png", "background.png"],

  "textInfos": [
)";

// The texts of a template, where it leaves room for them.
struct ExampleTexts {
    const char* templateName;
    const char* texts;
};

constexpr char usualTexts[] =
    R"(    {"text": "Summer 2026", "face": "DejaVu Serif", "fontstyle": "bold shadow", "size": 64, "color": "#fff4dc",
     "box": [64, 32]},
    {"text": "Four places, and the way between them", "face": "DejaVu Sans", "fontstyle": "italic shadow", "size": 26,
     "color": "#ffe0b8", "box": [68, 112]}
)";
constexpr char textsBelow[] =
    R"(    {"text": "Summer 2026", "face": "DejaVu Serif", "fontstyle": "bold shadow", "size": 64, "color": "#fff4dc",
     "box": [64, 560]},
    {"text": "Four places, and the way between them", "face": "DejaVu Sans", "fontstyle": "italic shadow", "size": 26,
     "color": "#ffe0b8", "box": [68, 644]}
)";
constexpr char titles[] =
    R"(    {"text": "Summer 2026", "face": "DejaVu Serif", "fontstyle": "bold", "size": 60, "color": "#ffffff",
     "box": [120, 96]},
    {"text": "The lake", "face": "DejaVu Sans", "size": 40, "color": "#ffffff", "box": [420, 260]},
    {"text": "The desert", "face": "DejaVu Sans", "size": 40, "color": "#ffffff", "box": [220, 390]},
    {"text": "The night", "face": "DejaVu Sans", "size": 40, "color": "#ffffff", "box": [560, 520]}
)";

// Small enough to stay on the first of many pictures.
constexpr char textsInCorner[] =
    R"(    {"text": "Summer 2026", "face": "DejaVu Serif", "fontstyle": "bold outline", "size": 38, "color": "#fff4dc",
     "box": [40, 28]},
    {"text": "Four places", "face": "DejaVu Sans", "fontstyle": "bold outline", "size": 22, "color": "#ffe0b8",
     "box": [42, 80]}
)";

constexpr ExampleTexts exampleTexts[] = {
    {"menu_fullscreen", textsBelow},
    {"menu_push", textsBelow},
    {"menu_layeredtitles", titles},
    {"menu_videowall", textsInCorner},
    {"menu_resizingpanels", textsInCorner},
    {"instructionmenu_common",
     R"(    {"text": "How to watch", "face": "DejaVu Serif", "fontstyle": "bold", "size": 44, "color": "#1f3550",
     "box": [104, 112]},
    {"text": "Arrows choose a chapter,", "face": "DejaVu Sans", "size": 28, "color": "#1f3550", "box": [104, 210]},
    {"text": "Enter plays it,", "face": "DejaVu Sans", "size": 28, "color": "#1f3550", "box": [104, 260]},
    {"text": "Menu leads back here.", "face": "DejaVu Sans", "size": 28, "color": "#1f3550", "box": [104, 310]}
)"},
    {"instructionmenu_festival",
     R"(    {"text": "How to watch", "face": "DejaVu Serif", "fontstyle": "bold", "size": 44, "color": "#ffe9b0",
     "box": [548, 150]},
    {"text": "Arrows choose a chapter,", "face": "DejaVu Sans", "size": 28, "color": "#ffffff", "box": [548, 250]},
    {"text": "Enter plays it,", "face": "DejaVu Sans", "size": 28, "color": "#ffffff", "box": [548, 300]},
    {"text": "Menu leads back here.", "face": "DejaVu Sans", "size": 28, "color": "#ffffff", "box": [548, 350]}
)"},
};

std::string ExampleProject(const std::string& templateName) {
    const std::string head = "{\n  \"template\": \"" + templateName;
    if (templateName == "menu_common") return head + placedProject;
    const auto* const row = std::find_if(std::begin(exampleTexts), std::end(exampleTexts),
                                         [&](const ExampleTexts& texts) { return templateName == texts.templateName; });
    return head + arrangedProject + (row == std::end(exampleTexts) ? usualTexts : row->texts) + "  ]\n}\n";
}

void MakeFolder(const fs::path& folder) {
    std::error_code error;
    fs::create_directories(folder, error);
    if (error) ThrowWriteError(folder.string(), AVERROR(error.value()));
}

}  // namespace

std::string WriteExampleProject(const InitOptions& options, const EffectModule& module) {
    RequireMenuTemplate(options.templateName, module);
    const fs::path folder = options.folder.empty() ? options.templateName : options.folder;
    std::vector<ExamplePicture> files = DrawExamplePictures();
    files.push_back({projectFile, ExampleProject(options.templateName)});
    MakeFolder(folder);
    // All stand under their names or none does.
    std::deque<PartFile> parts;
    for (const ExamplePicture& file : files)
        parts.emplace_back((folder / file.file).string(), options.overwrite).Write(file.png);
    for (PartFile& part : parts) part.Commit();
    return (folder / projectFile).string();
}

}  // namespace Nifikral
