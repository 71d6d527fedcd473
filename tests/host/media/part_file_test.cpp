#include "host/media/part_file.h"

#include "tests/host/command.h"

namespace {
std::function<void()> onSync;
}

// In place of the system's, which cannot be seen at work.
extern "C" int fsync(int) {
    if (onSync) onSync();
    return 0;
}

namespace Nifikral {
namespace {

using PartFileTest = CommandTest;

TEST_F(PartFileTest, IsOnTheDiskBeforeItGetsItsName) {
    const std::filesystem::path path = folder / "out.bin";
    int synced = 0;
    onSync = [&] {
        ++synced;
        EXPECT_FALSE(std::filesystem::exists(path));
    };
    {
        PartFile part(path, false);
        part.Write("all of it");
        part.Commit();
    }
    onSync = nullptr;
    EXPECT_EQ(synced, 1);
    EXPECT_EQ(ReadFile(path), "all of it");
    EXPECT_EQ(Files(), std::set<std::string>{"out.bin"});
}

TEST_F(PartFileTest, OfAnotherMachineIsDeadWhenItIsOld) {
    const std::filesystem::path fresh = folder / "a.mkv.nifikral-elsewhere-1-0.part",
                                old = folder / "b.mkv.nifikral-elsewhere-1-0.part";
    for (const std::filesystem::path& path : {fresh, old}) std::ofstream(path) << "half";
    std::filesystem::last_write_time(old, std::filesystem::file_time_type::clock::now() - std::chrono::hours(25));
    ClearDeadParts(folder / "out.mkv");
    EXPECT_EQ(Files(), std::set<std::string>{fresh.filename()});
}

TEST_F(PartFileTest, TakesTheLongestNames) {
    const std::filesystem::path path = folder / std::string(255, 'n');
    PartFile part(path, false);
    part.Write("x");
    part.Commit();
    EXPECT_EQ(ReadFile(path), "x");
}

}  // namespace
}  // namespace Nifikral
