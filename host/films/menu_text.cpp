#include "host/films/menu_text.h"

#include <algorithm>
#include <cmath>

#include "host/base/colour_text.h"
#include "host/films/text_renderer.h"

namespace Nifikral {
namespace {

constexpr const char* textKeys[] = {"text",  "face",  "fontstyle", "size", "spacing",
                                    "color", "align", "box",       "move", "show"};
constexpr const char* moveKeys[] = {"end", "formula", "speed"};
constexpr const char* alignNames[] = {"left", "center", "right"};

constexpr Limits frameNumbers{0, 1 << 30}, fontSizes{1, 4096};

}  // namespace

void RefuseSeparators(const ProjectItem& item, const std::string& text, const char* separators) {
    if (const std::size_t at = text.find_first_of(separators); at != std::string::npos)
        item.Fault("\"" + text + "\" holds '" + text[at] +
                   "', which the module's lists cannot carry; choose another name or text");
}

namespace {

void SetColour(StyledText& text, std::uint32_t colour) {
    text.red = std::uint8_t(colour >> 16);
    text.green = std::uint8_t(colour >> 8);
    text.blue = std::uint8_t(colour);
}

// The style that words name, whose alignment and spacing a text may say more plainly.
void SetWords(MenuText& text, const std::string& words) {
    const TextStyle before = text.styled.style;
    text.styleWords = words;
    TextStyle& style = text.styled.style = ParseStyle(words);
    if (style.align == TextAlign::Left) style.align = before.align;
    if (style.spacing == 0) style.spacing = before.spacing;
}

void ReadBox(MenuText& text, const ProjectItem& item) {
    const bool placeOnly = item.Entries().size() == 2;
    const std::vector<int> box = item.Integers(placeOnly ? "[x, y]" : "[x, y, width, height]");
    text.box = {};
    std::copy(box.begin(), box.end(), text.box.begin());
}

void ReadMotion(MenuText& text, const ProjectItem& item) {
    if (const ProjectItem move = item["move"]) {
        move.RefuseOtherKeys(moveKeys);
        text.moves = true;
        text.end = move["end"].Integers("[x, y]");
        if (move["formula"]) text.formula = move["formula"].Integers("[slope, intercept]");
        text.speed = move["speed"].IntegerOr(0);
        if (item["show"]) item["show"].Fault("does not go together with \"move\"; leave one of them out");
    } else if (const ProjectItem show = item["show"]) {
        const bool fromOnly = show.Entries().size() == 1;
        const std::vector<int> frames = show.Integers(fromOnly ? "[first]" : "[first, last]", frameNumbers);
        text.firstFrame = frames[0];
        if (!fromOnly) text.lastFrame = frames[1];
        if (!fromOnly && frames[1] < frames[0]) show.Fault("ends before it begins; give [first, last]");
    }
}

// Makes a text smaller, and breaks it, until its lines fit into its box: as few lines as possible at a size of at least
// half its own, and within words at last.
void Fit(MenuText& text) {
    StyledText& styled = text.styled;
    const int width = text.box[2], height = text.box[3], largest = styled.size;
    const std::string words = styled.text;
    const auto fits = [&] {
        const TextExtent extent = MeasureText(styled);
        return extent.width <= width && (height <= 0 || extent.height <= height);
    };
    // A little smaller is better than a second line.
    for (styled.size = largest; styled.size * 5 >= largest * 4; styled.size -= std::max(styled.size / 24, 1))
        if (fits()) return;
    for (const bool withinWords : {false, true})
        for (styled.size = largest; styled.size > (withinWords ? 1 : largest / 2);
             styled.size -= std::max(styled.size / 16, 1)) {
            styled.text = words;
            // The width is that of the picture, with the room around the letters.
            const int room = 2 * MeasureText(styled).left;
            styled.text = BreakLines(styled, width + room, withinWords);
            if (fits()) return;
        }
}

}  // namespace

MenuText StyledMenuText(const TypeStyle& type, const Film& film) {
    // Very wide and very high frames have no larger letters than usual ones.
    const double measure = std::min(double(film.height), film.width * 0.75);
    const auto part = [](int thousandths, double of) { return int(std::lround(thousandths * of / 1000)); };
    MenuText text;
    text.styled.face = type.face;
    text.styled.size = std::max(8, part(type.size, measure));
    SetColour(text.styled, type.colour);
    text.styled.style.align = type.align;
    text.styled.style.spacing = type.spacing;
    SetWords(text, type.words);
    text.isAligned = true;
    text.box = {part(type.box[0], film.width), part(type.box[1], film.height), part(type.box[2], film.width),
                part(type.box[3], film.height)};
    return text;
}

MenuText StyledMenuText(const TemplateStyle& style, const Film& film, std::size_t index) {
    MenuText text = StyledMenuText(index ? style.line : style.title, film);
    if (index > 1) text.box[1] += int(index - 1) * text.box[3];
    return text;
}

MenuText ReadMenuText(const ProjectItem& item, const MenuText& usual) {
    item.RefuseOtherKeys(textKeys);
    MenuText text = usual;
    text.item = item.Name();
    text.styled.text = item["text"].Text();
    if (item["text"] && text.styled.text.empty())
        item["text"].Fault("is empty; write something or leave the entry out");
    if (item["face"]) text.styled.face = item["face"].Text();
    if (item["fontstyle"]) SetWords(text, item["fontstyle"].Text());
    if (item["spacing"]) text.styled.style.spacing = item["spacing"].Integer({leastSpacing, mostSpacing});
    if (const ProjectItem align = item["align"]) {
        const auto* const name = std::ranges::find(alignNames, align.Text());
        if (name == std::end(alignNames))
            align.Fault("is \"" + align.Text() + "\"; give left, center or right");
        else
            text.styled.style.align = TextAlign(name - alignNames);
    }
    RefuseSeparators(item["text"], text.styled.text, ";\\");
    RefuseSeparators(item["face"], text.styled.face, ";\\'");
    RefuseSeparators(item["fontstyle"], text.styleWords, ";\\'");
    if (item["size"]) text.styled.size = item["size"].Integer(fontSizes);
    if (item["color"]) SetColour(text.styled, item["color"].Colour());
    if (item["box"]) {
        ReadBox(text, item["box"]);
        text.isAligned = bool(item["align"]);
        if (!text.isAligned) text.styled.style.align = TextAlign::Left;
    }
    ReadMotion(text, item);
    return text;
}

Json MenuTextJson(const MenuText& text) {
    const StyledText& styled = text.styled;
    Json json = {{"text", styled.text}, {"face", styled.face}, {"fontstyle", text.styleWords}, {"size", styled.size}};
    if (styled.style.spacing) json["spacing"] = styled.style.spacing;
    json["color"] = ColourText(unsigned(styled.red) << 16 | unsigned(styled.green) << 8 | styled.blue);
    json["align"] = alignNames[int(styled.style.align)];
    json["box"] = text.box;
    return json;
}

MenuText LaidOut(const MenuText& text) {
    if (!text.isAligned || text.styled.text.empty()) return text;
    MenuText laid = text;
    if (text.box[2] > 0) Fit(laid);
    const TextExtent extent = MeasureText(laid.styled);
    // Without a width, x is the left edge, the middle or the right edge.
    const int free = text.box[2] > 0 ? text.box[2] - extent.width : -extent.width;
    const TextAlign align = text.styled.style.align;
    const int across = align == TextAlign::Left ? 0 : align == TextAlign::Center ? free / 2 : free;
    laid.box = {text.box[0] + across - extent.left, text.box[1] - extent.top, 0, 0};
    for (int i : {0, 1}) laid.end[std::size_t(i)] += laid.box[std::size_t(i)] - text.box[std::size_t(i)];
    laid.isAligned = false;
    return laid;
}

std::string NumberList(const std::vector<int>& numbers) {
    std::string list;
    for (const int number : numbers) list.append(list.empty() ? "" : ";") += std::to_string(number);
    return list;
}

std::string TextInListOf(const MenuText& text) {
    const StyledText& styled = text.styled;
    std::string words = text.styleWords;
    const auto addWord = [&](const std::string& word) { words.append(words.empty() ? "" : " ") += word; };
    if (styled.style.align != TextAlign::Left) addWord(alignNames[int(styled.style.align)]);
    if (styled.style.spacing) addWord("spacing=" + std::to_string(styled.style.spacing));
    std::vector<int> numbers = {styled.size, styled.red, styled.green, styled.blue};
    numbers.insert(numbers.end(), text.box.begin(), text.box.end());
    const std::string head = styled.text + ";" + styled.face + ";" + words + ";" + NumberList(numbers) + ";";
    if (text.ofSource >= 0) return head + "picture;" + std::to_string(text.ofSource);
    if (text.moves)
        // The list's last item is counted and not read.
        return head + "true;" + NumberList({text.end[0], text.end[1], text.formula[0], text.formula[1], text.speed, 0});
    // The module counts frames from 1 and takes 0 for no limit.
    const bool limited = text.firstFrame > 0 || text.lastFrame >= 0;
    return head + "false;" + (limited ? "true;" : "false;") + NumberList({text.firstFrame + 1, text.lastFrame + 1});
}

}  // namespace Nifikral
