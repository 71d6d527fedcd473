#include "dvd_effects/menu/list_parsers.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

#include "dvd_effects/canvas/errors.h"

namespace AVBased {

using namespace TarvoBased;

namespace {

// Lines that the host reads beside an error of the parsers.
enum Line : int { lineList = 40, lineText = 90 };

constexpr std::size_t leastTextItems = 12, movingTextItems = 18, stillTextItems = 15, captionItems = 13;

// Splits a list of `perSource` items for each source and hands take(source, items) the items of one source after
// another.
template <class Take>
int ParsePerSource(additionsource_t* sources, const std::string& list, unsigned count, unsigned perSource, Take take) {
    return AtBoundary(lineList, dvdEffectsUtilsName, [&] {
        Require(sources, textNullPointer, lineList);
        const std::vector<std::string> items = SplitList(list, ';');
        Require(items.size() == std::size_t(count) * perSource, textInvalidParamValue, lineList);
        for (unsigned i = 0; i < count; ++i) take(sources[i], &items[std::size_t(i) * perSource]);
        return 1;
    });
}

template <std::int32_t additionsource_t::*member>
int ParseNumbers(additionsource_t* sources, const std::string& list, unsigned count) {
    return ParsePerSource(sources, list, count, 1, [](additionsource_t& source, const std::string* item) {
        source.*member = ParseInteger(*item);
    });
}

template <point_t additionsource_t::*member>
int ParsePoints(additionsource_t* sources, const std::string& list, unsigned count) {
    return ParsePerSource(sources, list, count, 2, [](additionsource_t& source, const std::string* items) {
        source.*member = {ParseInteger(items[0]), ParseInteger(items[1])};
    });
}

formula_t ParseFormula(const std::string* items) {
    return {double(ParseInteger(items[0])), double(ParseInteger(items[1]))};
}

void TakeMotion(text_t& text, const std::vector<std::string>& items) {
    const std::string* const tail = items.data() + leastTextItems;
    if (items[11] == "true" && items.size() == movingTextItems) {
        text.moves = true;
        text.endPosition = {ParseInteger(tail[0]), ParseInteger(tail[1])};
        text.moveFormula = ParseFormula(tail + 2);
        text.moveSpeed = ParseInteger(tail[4]);  // deliberate: the last item counts but is not read
    } else if (items[11] == "false" && items.size() == stillTextItems) {
        text.moves = false;
        if (tail[0] != "true") return;
        text.hasStillTail = true;
        text.stillTail[0] = ParseInteger(tail[1]);
        text.stillTail[1] = ParseInteger(tail[2]);
    } else if (items[11] == "picture" && items.size() == captionItems) {
        text.ofSource = ParseInteger(tail[0]);
    }
}

}  // namespace

std::vector<std::string> SplitList(const std::string& list, char separator) {
    std::vector<std::string> items;
    if (list.empty()) return items;
    for (std::size_t begin = 0;;) {
        const std::size_t end = list.find(separator, begin);
        items.push_back(list.substr(begin, end - begin));
        if (end == std::string::npos) return items;
        begin = end + 1;
    }
}

std::int32_t ParseInteger(const std::string& text) {
    using Limits = std::numeric_limits<std::int32_t>;
    return std::int32_t(std::clamp<long long>(std::strtoll(text.c_str(), nullptr, 10), Limits::min(), Limits::max()));
}

int GetAdditionSourceType(additionsource_t* sources, const std::string& list, unsigned count) {
    return ParsePerSource(sources, list, count, 1,
                          [](additionsource_t& source, const std::string* item) { source.isImage = *item == "true"; });
}

int GetStartPositions(additionsource_t* sources, const std::string& list, unsigned count) {
    return ParsePoints<&additionsource_t::startPosition>(sources, list, count);
}

int GetEndPositions(additionsource_t* sources, const std::string& list, unsigned count) {
    return ParsePoints<&additionsource_t::endPosition>(sources, list, count);
}

int GetMoveFormulas(additionsource_t* sources, const std::string& list, unsigned count) {
    return ParsePerSource(sources, list, count, 2, [](additionsource_t& source, const std::string* items) {
        source.moveFormula = ParseFormula(items);
    });
}

int GetMoveSpeeds(additionsource_t* sources, const std::string& list, unsigned count) {
    return ParseNumbers<&additionsource_t::moveSpeed>(sources, list, count);
}

int GetStartTrans(additionsource_t* sources, const std::string& list, unsigned count) {
    return ParseNumbers<&additionsource_t::startTrans>(sources, list, count);
}

int GetEndTrans(additionsource_t* sources, const std::string& list, unsigned count) {
    return ParseNumbers<&additionsource_t::endTrans>(sources, list, count);
}

int GetFadeSpeeds(additionsource_t* sources, const std::string& list, unsigned count) {
    return ParseNumbers<&additionsource_t::fadeSpeed>(sources, list, count);
}

int ParseTextInfo(text_t* text, const std::string& list) {
    return AtBoundary(lineText, dvdEffectsUtilsName, [&] {
        Require(text, textNullPointer, lineText);
        const std::vector<std::string> items = SplitList(list, ';');
        Require(items.size() >= leastTextItems, textInvalidPramaValue, lineText);
        text_t parsed = *text;
        parsed.text = items[0];
        parsed.face = items[1];
        parsed.fontstyle = items[2];
        parsed.size = ParseInteger(items[3]);
        parsed.red = std::uint8_t(ParseInteger(items[4]));
        parsed.green = std::uint8_t(ParseInteger(items[5]));
        parsed.blue = std::uint8_t(ParseInteger(items[6]));
        parsed.boxPosition = {ParseInteger(items[7]), ParseInteger(items[8])};
        parsed.boxSize = {ParseInteger(items[9]), ParseInteger(items[10])};
        TakeMotion(parsed, items);
        *text = std::move(parsed);
        return 1;
    });
}

char ConvertDecimalToHex(int digit) { return "0123456789abcdef"[digit & 15]; }

std::string TextHtml(const text_t& text) {
    std::string colour = "#";
    for (int value : {text.red, text.green, text.blue}) {
        colour += ConvertDecimalToHex(value >> 4);
        colour += ConvertDecimalToHex(value);
    }
    return "<font color='" + colour + "' size='" + std::to_string(text.size) + "' face='" + text.face +
           "' fontstyle='" + text.fontstyle + "'>" + text.text + "</font>";
}

}  // namespace AVBased
