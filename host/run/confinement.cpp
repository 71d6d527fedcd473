#include "host/run/confinement.h"

extern "C" {
#include <libavformat/avformat.h>
}

#include <link.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iterator>

#include "host/base/child_program.h"
#include "host/base/sandbox.h"
#include "host/base/split_text.h"

namespace Nifikral {
namespace {

namespace fs = std::filesystem;

// The nearest folder above a file that is there.
fs::path FolderOf(const fs::path& file) {
    std::error_code error;
    fs::path folder = fs::absolute(file, error);
    do folder = folder.parent_path();
    while (!fs::is_directory(folder, error) && folder.has_relative_path());
    return folder;
}

// What a word of the command line names, if anything.
void AddNamed(const std::string& word, std::vector<fs::path>& named) {
    std::error_code error;
    if (word.starts_with('@'))
        named.push_back(FolderOf(word.substr(1)));
    else if (av_filename_number_test(word.c_str()) || fs::path(word).extension() == ".json")
        named.push_back(FolderOf(word));
    else if (fs::exists(word, error))
        named.emplace_back(word);
}

std::vector<fs::path> FilesNamed(const std::vector<std::string>& words) {
    std::vector<fs::path> named;
    for (const std::string& word : words) {
        AddNamed(word, named);
        if (word.starts_with('-')) AddNamed(word.substr(word.find('=') + 1), named);
    }
    return named;
}

// Below the user's folder of a kind: where the variable says, else in the home folder.
void AddOwn(const char* variable, const char* usual, const char* name, std::vector<fs::path>& paths) {
    const char *const chosen = std::getenv(variable), *const home = std::getenv("HOME");
    if (chosen && *chosen)
        paths.push_back(fs::path(chosen) / name);
    else if (home && *home)
        paths.push_back(fs::path(home) / usual / name);
}

// What every run reads beside its inputs.
Reach ReachOfSystem() {
    Reach reach;
    for (const char* const system : {"/usr", "/lib", "/lib64", "/etc/fonts", "/etc/ld.so.cache", "/etc/localtime",
                                     "/var/cache/fontconfig", "/proc", "/sys/devices/system", "/dev/urandom"})
        reach.read.emplace_back(system);
    AddOwn("XDG_CONFIG_HOME", ".config", "fontconfig", reach.read);
    AddOwn("XDG_CONFIG_HOME", ".config", "nifikral", reach.read);
    AddOwn("XDG_DATA_HOME", ".local/share", "fonts", reach.read);
    AddOwn("XDG_CACHE_HOME", ".cache", "fontconfig", reach.read);
    AddOwn("", "", ".fonts", reach.read);
    reach.write.emplace_back("/dev/null");
    return reach;
}

// Where a program of this name would be found; nowhere if empty.
fs::path Found(const std::string& program) {
    const char* const folders = std::getenv("PATH");
    for (const std::string& folder : Split(folders ? folders : "", ':')) {
        fs::path path = fs::path(folder) / program;
        if (access(path.c_str(), X_OK) == 0) return path;
    }
    return {};
}

// A library that this program has loaded, or what loads them.
int AddLibrary(dl_phdr_info* library, std::size_t, void* paths) {
    if (*library->dlpi_name) static_cast<std::vector<fs::path>*>(paths)->emplace_back(library->dlpi_name);
    return 0;
}

}  // namespace

void ConfineRun(const RunOptions& options) {
    if (!options.confined) return;
    Reach reach = ReachOfSystem();
    std::ranges::move(FilesNamed(options.namedWords), std::back_inserter(reach.read));
    const fs::path output = options.output.path;
    std::error_code error;
    const bool isPlace =
        fs::is_directory(output, error) || (fs::exists(output, error) && !fs::is_regular_file(output, error));
    if (output != "-") reach.write.push_back(isPlace ? output : FolderOf(output));
    EnterSandbox(reach);
}

void ConfineWork(const std::string& input, const fs::path& place, const std::vector<std::string>& programs,
                 bool listens) {
    Reach reach = ReachOfSystem();
    std::ranges::move(FilesNamed({input}), std::back_inserter(reach.read));
    reach.write.push_back(place);
    reach.run.emplace_back(OwnProgram());
    dl_iterate_phdr(AddLibrary, &reach.run);
    for (const std::string& program : programs) reach.run.push_back(Found(program));
    reach.listens = listens;
    EnterSandbox(reach);
}

}  // namespace Nifikral
