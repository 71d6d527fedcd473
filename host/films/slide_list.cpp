#include "host/films/slide_list.h"

#include <cerrno>
#include <charconv>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "host/base/errors.h"
#include "host/base/text_file.h"
#include "host/films/captions.h"
#include "host/films/text_renderer.h"

namespace Nifikral {
namespace {

constexpr double longestSeconds = 86400;

std::string Trimmed(const std::string& text) {
    constexpr char blanks[] = " \t\r";
    const std::size_t begin = text.find_first_not_of(blanks);
    return begin == std::string::npos ? "" : text.substr(begin, text.find_last_not_of(blanks) - begin + 1);
}

// The part of a line up to a "|", which is taken from it.
std::string TakePart(std::string& line) {
    const std::size_t bar = line.find('|');
    std::string part = Trimmed(line.substr(0, bar));
    line = bar == std::string::npos ? "" : line.substr(bar + 1);
    return part;
}

double ReadSeconds(const std::string& text, const std::string& where) {
    double seconds = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, seconds);
    if (error == std::errc() && rest == end && seconds >= 0 && seconds <= longestSeconds) return seconds;
    throw HostError(ExitCode::Usage,
                    where + "\"" + text + "\" is no time; give seconds from 0 to 86400, or nothing between the bars");
}

}  // namespace

std::vector<Slide> ReadSlideList(const std::string& path) {
    std::ifstream stream(path, std::ios::binary);
    std::error_code folder;
    if (!stream || std::filesystem::is_directory(path, folder))
        throw HostError(ExitCode::Input, path + ": " + (stream ? "is a folder" : std::strerror(errno)) +
                                             "; name a list of pictures behind the @");
    const std::string text = ReadText(stream, path, "list");
    if (text.find('\0') != std::string::npos)
        throw HostError(ExitCode::Usage, path + " is no list of pictures, which is a text with a file on each line");
    std::istringstream lines(text);
    std::vector<Slide> slides;
    int number = 0;
    for (std::string line; std::getline(lines, line);) {
        const std::string where = path + ":" + std::to_string(++number) + ": ";
        if (number == 1 && line.starts_with("\xEF\xBB\xBF")) line.erase(0, 3);
        const std::string file = TakePart(line), seconds = TakePart(line), caption = Trimmed(line);
        if (file.starts_with('#') || (file.empty() && seconds.empty() && caption.empty())) continue;
        if (file.empty()) throw HostError(ExitCode::Usage, where + "names no file; begin the line with one");
        if (FirstInvalidByte(caption))
            throw HostError(ExitCode::Usage, where + "the caption is no UTF-8; save the list as UTF-8");
        CheckCaptions(caption, where);
        Slide all;
        if (!seconds.empty()) all.seconds = ReadSeconds(seconds, where);
        if (!caption.empty()) all.caption = caption;
        const std::string named = (std::filesystem::path(path).parent_path() / file).string();
        std::error_code missing;
        if (file.starts_with('@') && !std::filesystem::exists(named, missing))
            throw HostError(ExitCode::Usage, where + "a list holds no other lists; write the names here");
        std::vector<Slide> found;
        try {
            found = FindSlides({named});
        } catch (const HostError& error) {
            throw HostError(error.Code(), where + error.what());
        }
        for (Slide& slide : found) {
            if (!slide.seconds) slide.seconds = all.seconds;
            if (!slide.caption) slide.caption = all.caption;
            slides.push_back(std::move(slide));
        }
    }
    if (slides.empty()) throw HostError(ExitCode::Input, path + " names no pictures; write one on each line");
    return slides;
}

}  // namespace Nifikral
