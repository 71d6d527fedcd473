#include "host/films/menu_pages.h"

#include <algorithm>

namespace Nifikral {
namespace {

struct Capacity {
    const char* templateName;
    int pictures;
};

// Templates whose pictures share the frame, and get small when they are many.
constexpr Capacity capacities[] = {
    {"menu_memories", 12},       {"menu_oldage", 12},    {"menu_babygirl", 12},  {"menu_babyboy", 12},
    {"menu_travel", 12},         {"menu_pets", 12},      {"menu_festival", 12},  {"menu_specialoccasion", 12},
    {"submenu_festival", 12},    {"menu_memories2", 12}, {"submenu_common", 12}, {"menu_rectangles", 9},
    {"menu_resizingpanels", 12},
};

void ReplaceAll(std::string& text, const std::string& what, const std::string& by) {
    for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + by.size()))
        text.replace(at, what.size(), by);
}

}  // namespace

int UsualPerPage(const std::string& templateName) {
    const auto* const row = std::find_if(std::begin(capacities), std::end(capacities),
                                         [&](const Capacity& c) { return templateName == c.templateName; });
    return row == std::end(capacities) ? 0 : row->pictures;
}

std::vector<MenuProject> PagesOf(const MenuProject& project) {
    const std::size_t all = project.sources.size(), each = project.perPage > 0 ? std::size_t(project.perPage) : all;
    const std::size_t count = std::max<std::size_t>(1, each ? (all + each - 1) / each : 0);
    std::vector<MenuProject> pages(count, project);
    for (std::size_t i = 0; i < count; ++i) {
        const auto begin = project.sources.begin() + std::ptrdiff_t(i * each);
        pages[i].sources.assign(begin, begin + std::ptrdiff_t(std::min(each, all - i * each)));
        const auto number = [&](std::string& text) {
            ReplaceAll(text, "{page}", std::to_string(i + 1));
            ReplaceAll(text, "{pages}", std::to_string(count));
        };
        for (MenuText& text : pages[i].texts) number(text.styled.text);
        for (std::string& button : pages[i].buttons) number(button);
    }
    return pages;
}

}  // namespace Nifikral
