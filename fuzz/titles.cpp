// Titles: the texts of its options, one a line, and the pictures that come of them. The first bytes choose the numbers,
// and words that its options know.

#include "fuzz/target.h"
#include "host/base/split_text.h"
#include "host/films/title.h"

using namespace Nifikral;

namespace {

// Some of what bytes may say are words, so that texts mean something more often.
template <std::size_t count>
std::string Word(unsigned choice, const char* const (&words)[count], const std::string& other) {
    return choice < count ? words[choice] : other;
}

TitleOptions Options(const std::uint8_t* bytes, const std::vector<std::string>& lines) {
    constexpr const char* motions[] = {"none", "left", "right", "up", "down", "zoom"};
    constexpr const char* styles[] = {"bold", "italic", "bold italic shadow", "outline"};
    constexpr const char* colours[] = {"#ff8000", "#ff800080", "red"};
    const std::vector<std::string> places = TitlePlaces();
    TitleOptions options;
    options.text = lines[0];
    options.face = lines[1];
    options.style = Word(bytes[0] % 8, styles, lines[2]);
    options.colour = Word(bytes[1] % 8, colours, lines[3]);
    options.place = bytes[2] % 16 < places.size() ? places[bytes[2] % 16] : lines[4];
    options.inMotion = Word(bytes[3] % 8, motions, lines[5]);
    options.outMotion = Word(bytes[4] % 8, motions, lines[6]);
    options.size = bytes[5] % 64;
    return options;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    constexpr int width = 48, height = 36, frames = 8;
    constexpr std::size_t head = 8, texts = 7;
    if (size < head) return 0;
    std::vector<std::string> lines = Split(std::string(bytes + head, bytes + size), '\n');
    lines.resize(texts);
    const TitleTimes when{bytes[6] % 4, bytes[6] / 4 % 16, bytes[7] % 7, bytes[7] / 7 % 5};
    Fuzzing::Try([&] { Fuzzing::ApplyTo({TitleRequest(Options(bytes, lines), when)}, width, height, frames); });
    return 0;
}
