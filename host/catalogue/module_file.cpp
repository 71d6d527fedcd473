#include "host/catalogue/module_file.h"

#include <dlfcn.h>
#include <link.h>

#include <cstdlib>

namespace Nifikral {
namespace {

namespace fs = std::filesystem;

constexpr char moduleFile[] = "libnifikral.so";

constexpr const char* moduleFolders[] = {
    "../lib",                                    // a built program
    "..",                                        // a built bridge, in a folder of its kind below lib
    "../nifikral",                               // an installed bridge
    "../" NIFIKRAL_LIBDIR "/nifikral",           // an installed program
    "../../../../" NIFIKRAL_LIBDIR "/nifikral",  // an installed package of Python, in lib/python3/dist-packages
};

fs::path OwnFolder() {
    Dl_info place{};
    link_map* object = nullptr;
    const int found = dladdr1(moduleFile, &place, reinterpret_cast<void**>(&object), RTLD_DL_LINKMAP);
    // The loader knows the program itself by no name.
    const bool loaded = found != 0 && object->l_name[0] != '\0';
    std::error_code error;
    return fs::canonical(loaded ? object->l_name : "/proc/self/exe", error).parent_path();
}

}  // namespace

fs::path ModuleBelongingTo(const fs::path& folder) {
    for (const char* const candidate : moduleFolders) {
        std::error_code error;
        fs::path file = fs::canonical(folder / candidate / moduleFile, error);
        if (!error) return file;
    }
    return {};
}

std::string FindModuleFile() {
    if (const char* const fromEnvironment = std::getenv("NIFIKRAL_MODULE")) return fromEnvironment;
    const fs::path folder = OwnFolder();
    const fs::path file = folder.empty() ? fs::path() : ModuleBelongingTo(folder);
    return file.empty() ? moduleFile : file.string();
}

}  // namespace Nifikral
