#include "host/media/numbered_files.h"

extern "C" {
#include <libavformat/avformat.h>
}

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <utility>

#include "host/base/errors.h"

namespace Nifikral {
namespace {

namespace fs = std::filesystem;

std::string Missing(long long first, long long last) {
    if (first == last) return "number " + std::to_string(first) + " is missing";
    return "numbers " + std::to_string(first) + " to " + std::to_string(last) + " are missing";
}

// What a pattern has before and behind its number.
std::pair<std::string, std::string> AroundNumber(const std::string& pattern) {
    std::string head;
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        head += pattern[i];
        if (pattern[i] != '%') continue;
        const std::size_t end = pattern.find_first_not_of("0123456789", i + 1);
        if (end != std::string::npos && pattern[end] == 'd')
            return {head.substr(0, head.size() - 1), pattern.substr(end + 1)};
        i += pattern.substr(i + 1, 1) == "%";
    }
    throw HostError(ExitCode::Usage, pattern + " has no number in its name; give one, as in %06d, to no folder");
}

}  // namespace

Gaps ParseGaps(const std::string& text) {
    if (text.empty()) return Gaps::Refuse;
    if (text == "skip") return Gaps::Skip;
    if (text == "repeat") return Gaps::Repeat;
    if (text == "stop") return Gaps::Stop;
    throw HostError(ExitCode::Usage, "--gaps " + text + " is none; give skip, repeat or stop");
}

bool IsNumbered(const std::string& path) {
    std::error_code error;
    return av_filename_number_test(path.c_str()) && !fs::exists(path, error);
}

std::string NumberedPath(const std::string& pattern, long long number) {
    char path[4096];
    if (av_get_frame_filename(path, sizeof path, pattern.c_str(), int(number)) < 0)
        throw HostError(ExitCode::Usage, pattern + " is no pattern for names; use one %06d");
    return path;
}

std::vector<long long> ExistingNumbers(const std::string& pattern) {
    const fs::path path(pattern), folder = path.has_parent_path() ? path.parent_path() : ".";
    const auto [head, tail] = AroundNumber(path.filename().string());
    std::vector<long long> numbers;
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, error)) {
        const std::string name = entry.path().filename().string();
        if (name.size() <= head.size() + tail.size() || !name.starts_with(head) || !name.ends_with(tail)) continue;
        const char *const begin = name.data() + head.size(), *const end = name.data() + name.size() - tail.size();
        int number = 0;
        const auto [rest, fault] = std::from_chars(begin, end, number);
        // Written otherwise, with fewer zeros or a sign, it is another file.
        if (fault == std::errc() && rest == end && fs::path(NumberedPath(pattern, number)).filename() == name)
            numbers.push_back(number);
    }
    std::sort(numbers.begin(), numbers.end());
    return numbers;
}

std::vector<std::string> NumberedFiles(const std::string& pattern, Gaps gaps, long long wanted) {
    const std::vector<long long> numbers = ExistingNumbers(pattern);
    if (numbers.empty())
        throw HostError(ExitCode::Input, pattern + ": no file has such a name, as " + NumberedPath(pattern, 1) +
                                             " would be; check the pattern");
    std::vector<std::string> files;
    long long expected = numbers.front();
    for (const long long number : numbers) {
        if ((long long)files.size() >= wanted || (number > expected && gaps == Gaps::Stop)) break;
        if (number > expected && gaps == Gaps::Refuse)
            throw HostError(ExitCode::Input,
                            pattern + ": " + Missing(expected, number - 1) + ", while " +
                                NumberedPath(pattern, number) +
                                " is there; make what is missing, or give --gaps skip, repeat or stop");
        if (number > expected && gaps == Gaps::Repeat)
            files.resize(files.size() + std::size_t(number - expected), files.back());
        files.push_back(NumberedPath(pattern, number));
        expected = number + 1;
    }
    return files;
}

}  // namespace Nifikral
