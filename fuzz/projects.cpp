// Project files of menus, and lists of slides. The first byte chooses the template.

#include "avbase/avbase_srcutils/pixel_formats.h"
#include "fuzz/target.h"
#include "host/films/menu.h"
#include "host/films/menu_pages.h"
#include "host/films/slide_list.h"

using namespace Nifikral;

namespace {

void ReadMenu(const std::string& path, const std::string& templateName) {
    Faults faults(path);
    const MenuProject project = ReadMenuProject(path, templateName, nullptr, faults);
    CheckLoop(project.film, faults);
    faults.ThrowIfAny();
    constexpr int largestSide = 200, mostPages = 3;
    if (project.film.width > largestSide || project.film.height > largestSide) return;
    const std::vector<MenuProject> pages = PagesOf(project);
    for (std::size_t i = 0; i < pages.size() && i < mostPages; ++i) {
        const PreparedFilm prepared = PrepareMenuPage(pages[i], templateName, Fuzzing::Module(), path);
        FilmPictures(*prepared.generator, prepared.film, AVBased::formatRgba32).Make();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    constexpr const char* templates[] = {"menu_common",   "menu_performance", "menu_memories",
                                         "menu_babygirl", "submenu_common",   "instructionmenu_common"};
    if (size == 0) return 0;
    const std::size_t chosen = bytes[0] % (std::size(templates) + 1);
    const std::string path = Fuzzing::Folder().Write("project.json", std::string(bytes + 1, bytes + size));
    Fuzzing::Try([&] {
        if (chosen < std::size(templates))
            ReadMenu(path, templates[chosen]);
        else
            ReadSlideList(path);
    });
    return 0;
}
