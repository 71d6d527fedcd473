// The arguments of a plan, with a byte 0 between them, and the numbers that options take. What a plan in JSON says is
// what went into it.

#include <nlohmann/json.hpp>

#include "fuzz/target.h"
#include "host/base/split_text.h"
#include "host/media/frame_rate.h"
#include "host/media/numbered_files.h"
#include "host/run/plan.h"

using namespace Nifikral;

namespace {

void Plan(long long chunks, const std::vector<std::string>& words, const FrameRange& frames,
          const std::string& format) {
    OutputOptions output;
    output.path = "out.mkv";
    const CommandPlan plan = PlanChunks(chunks, words, output, frames);
    long long next = frames.first;
    for (const FrameRange& chunk : plan.chunks) {
        if (chunk.first != next || chunk.last < chunk.first) __builtin_trap();
        next = chunk.last + 1;
    }
    if (next != frames.last + 1) __builtin_trap();
    const std::string text = PlanText(plan, "nifikral", format);
    if (format != "json") return;
    const nlohmann::json parsed = nlohmann::json::parse(text);
    for (std::size_t i = 0; i < plan.makers.size(); ++i)
        if (parsed["chunks"][i]["command"].size() != plan.makers[i].size() + 1) __builtin_trap();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    if (size < 3) return 0;
    const std::vector<std::string> words = Split(std::string(bytes + 3, bytes + size), '\0');
    const std::vector<std::string> formats = PlanFormats();
    for (const std::string& word : words) {
        Fuzzing::Try([&] { ParseRange(word); });
        Fuzzing::Try([&] { RequireFrameRate(word); });
        Fuzzing::Try([&] { ParseGaps(word); });
    }
    Fuzzing::Try([&] {
        const FrameRange frames{bytes[1], bytes[1] + bytes[2]};
        Plan(1 + bytes[0], words, frames, formats[bytes[2] % formats.size()]);
    });
    return 0;
}
