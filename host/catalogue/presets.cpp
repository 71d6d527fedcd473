#include "host/catalogue/presets.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "host/base/errors.h"
#include "host/base/nearest_names.h"
#include "host/base/text_file.h"

namespace Nifikral {
namespace {

std::string UsersOwnFile() {
    if (const char* const config = std::getenv("XDG_CONFIG_HOME"); config && *config)
        return std::string(config) + "/nifikral/presets";
    const char* const home = std::getenv("HOME");
    return std::string(home ? home : "") + "/.config/nifikral/presets";
}

// Words between blanks; quotes hold one together.
std::vector<std::string> WordsOf(const std::string& line) {
    std::vector<std::string> words;
    bool within = false;
    char quote = 0;
    for (const char c : line) {
        if (quote ? c == quote : c == '"' || c == '\'') {
            quote = quote ? char(0) : c;
        } else if (!quote && std::isspace(static_cast<unsigned char>(c))) {
            within = false;
            continue;
        } else {
            if (!within) words.emplace_back();
            words.back() += c;
            within = true;
            continue;
        }
        if (!within) words.emplace_back();
        within = true;
    }
    return words;
}

bool IsName(const std::string& word) {
    return !word.empty() && std::all_of(word.begin(), word.end(), [](char c) {
        return std::isalnum(static_cast<unsigned char>(c)) || c == '-' || c == '_' || c == '.';
    });
}

}  // namespace

Presets::Presets(const std::string& file) {
    Read(shippedPresets, "built-in presets");
    const std::string path = file.empty() ? UsersOwnFile() : file;
    std::error_code error;
    if (file.empty() && !std::filesystem::exists(path, error)) return;
    std::ifstream stream(path, std::ios::binary);
    if (!stream || std::filesystem::is_directory(path, error))
        throw HostError(ExitCode::Input, "the presets in " + path + " cannot be read (" +
                                             (errno ? std::strerror(errno) : "no file") + "); check the name");
    Read(ReadText(stream, path, "presets"), path);
}

void Presets::Read(const std::string& text, const std::string& file) {
    std::istringstream lines(text);
    std::string comment;
    Preset* open = nullptr;
    int number = 0;
    for (std::string line; std::getline(lines, line);) {
        const std::string place = file + ":" + std::to_string(++number);
        std::vector<std::string> words = WordsOf(line);
        if (words.empty()) {
            comment.clear();
            open = nullptr;
        } else if (words.front().starts_with('#')) {
            comment = line.substr(std::min(line.find_first_not_of("# \t"), line.size()));
            open = nullptr;
        } else if (std::isspace(static_cast<unsigned char>(line.front())) && open) {
            open->requests.insert(open->requests.end(), words.begin(), words.end());
        } else if (words.size() < 3 || !IsName(words[0]) || words[1] != "=") {
            throw HostError(ExitCode::Usage,
                            place + ": this is not of the form NAME = EFFECT[:name=value]... EFFECT...");
        } else {
            std::erase_if(m_presets, [&](const Preset& preset) { return preset.name == words[0]; });
            m_presets.push_back({words[0], comment, {words.begin() + 2, words.end()}, place});
            open = &m_presets.back();
            comment.clear();
        }
    }
}

const Preset& Presets::Find(const std::string& name) const {
    std::vector<std::string> names;
    for (const Preset& preset : m_presets) {
        if (preset.name == name) return preset;
        names.push_back(preset.name);
    }
    throw HostError(ExitCode::Usage,
                    "there is no preset \"@" + name + "\"" + DidYouMean(name, names) + " (nifikral list @ shows all)");
}

}  // namespace Nifikral
