// Projects of discs. One that is right is written as it was read.

#include "fuzz/target.h"
#include "host/disc/disc_json.h"

using namespace Nifikral;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const std::string path = Fuzzing::Folder().Write("disc.json", std::string(bytes, bytes + size));
    Fuzzing::Try([&] {
        const auto written = [&] {
            Faults faults(path);
            const DiscProject project = ReadDiscProject(path, faults);
            faults.ThrowIfAny();
            return DiscJson(project, path);
        };
        const std::string once = written();
        Fuzzing::Folder().Write("disc.json", once);
        if (written() != once) __builtin_trap();
    });
    return 0;
}
