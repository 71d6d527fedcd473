#include "host/catalogue/module_file.h"
#include "tests/host/command.h"

namespace Nifikral {
namespace {

namespace fs = std::filesystem;

class ModuleSearch : public CommandTest {
 protected:
    fs::path Lay(const fs::path& file, const fs::path& original = NIFIKRAL_MODULE_FILE) const {
        fs::create_directories((folder / file).parent_path());
        fs::copy_file(original, folder / file);
        return fs::canonical(folder / file);
    }
};

TEST_F(ModuleSearch, TakesTheModuleBesideAProgramOrABridge) {
    for (const char* const place : {"built/bin", "built/lib/frei0r-1", "usr/lib/here/gstreamer-1.0", "empty/bin"})
        fs::create_directories(folder / place);
    const fs::path built = Lay("built/lib/libnifikral.so"), installed = Lay("usr/lib/here/nifikral/libnifikral.so");
    EXPECT_EQ(ModuleBelongingTo(folder / "built/bin"), built);
    EXPECT_EQ(ModuleBelongingTo(folder / "built/lib/frei0r-1"), built);
    EXPECT_EQ(ModuleBelongingTo(folder / "usr/lib/here/gstreamer-1.0"), installed);
    EXPECT_EQ(ModuleBelongingTo(folder / "empty/bin"), "");
}

TEST_F(ModuleSearch, AnInstalledCommandLoadsTheModuleInstalledWithIt) {
    const fs::path command = Lay("usr/bin/nifikral", NIFIKRAL_PROGRAM);
    const fs::path module = Lay(fs::path("usr") / NIFIKRAL_LIBDIR / "nifikral/libnifikral.so");
    EXPECT_EQ(Wait(Start({command, "list"})).exitCode, 0);
    const Outcome named = Wait(Start({"env", "NIFIKRAL_MODULE=/nowhere.so", command, "list"}));
    EXPECT_NE(named.errors.find("/nowhere.so"), std::string::npos) << "the environment comes first: " << named.errors;
    std::ofstream(module) << "no longer a module";
    const Outcome broken = Wait(Start({command, "list"}));
    EXPECT_EQ(broken.exitCode, 1);
    for (const std::string& word : {module.string(), std::string("$NIFIKRAL_MODULE")})
        EXPECT_NE(broken.errors.find(word), std::string::npos) << broken.errors;
}

}  // namespace
}  // namespace Nifikral
