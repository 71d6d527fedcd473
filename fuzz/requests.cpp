// Effects as they are asked for on the command line: names, windows, regions, values and key points. The first byte
// chooses between texts as they come, one a line, and those that follow the grammar for the most part.

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>

#include "fuzz/target.h"
#include "host/base/split_text.h"
#include "host/catalogue/catalogue.h"
#include "host/run/effect_chain.h"
#include "host/run/request_chain.h"

using namespace Nifikral;

namespace {

constexpr int width = 24, height = 18, frames = 10;

std::string Number(FuzzedDataProvider& data) {
    constexpr const char* odd[] = {"-1", "1e300", "2147483647", "-2147483648", "0x80", "#ff8800", "red", "nan", ""};
    constexpr const char* units[] = {"", "%", "s", "~in-out", "~hold", "%~out"};
    const std::string number = data.ConsumeIntegralInRange(0, 4) == 4 ? data.PickValueInArray(odd)
                               : data.ConsumeBool()                   ? std::to_string(data.ConsumeIntegral<char>())
                                                    : std::to_string(data.ConsumeFloatingPointInRange(-1.0, 20.0));
    return number + data.PickValueInArray(units);
}

std::string Value(FuzzedDataProvider& data) {
    constexpr const char* shapes[] = {"circle,", "ellipse,", "rectangle,", "p.ppm", "@0:", "@1s:", ""};
    constexpr const char* between[] = {",", "..", ",3:", ",0.2s:", ""};
    std::string value = data.PickValueInArray(shapes);
    constexpr int mostNumbers = 6, longest = 20;
    for (int i = data.ConsumeIntegralInRange(0, mostNumbers); i >= 0; --i)
        value += Number(data) + (i ? data.PickValueInArray(between) : "");
    return data.ConsumeIntegralInRange(0, 7) ? value : data.ConsumeRandomLengthString(longest);
}

std::string Request(FuzzedDataProvider& data) {
    const std::span<const EffectInfo> all = Catalogue();
    const EffectInfo& effect = all[data.ConsumeIntegralInRange<std::size_t>(0, all.size() - 1)];
    std::string request = effect.name;
    if (data.ConsumeIntegralInRange(0, 2) == 2) request += "@" + Number(data) + "-" + Number(data);
    std::vector<std::string> names = {"inside", "outside", "soft", "duration"};
    for (const ParameterInfo& parameter : effect.parameters) names.push_back(ShortName(effect.name, parameter.name));
    for (int i = data.ConsumeIntegralInRange(0, 4); i > 0; --i)
        request += ":" + names[data.ConsumeIntegralInRange<std::size_t>(0, names.size() - 1)] + "=" +
                   (data.ConsumeBool() ? Number(data) : Value(data));
    std::erase(request, '\0');
    return request;
}

std::vector<std::string> Requests(const std::uint8_t* bytes, std::size_t size) {
    constexpr std::size_t most = 4;
    std::vector<std::string> requests;
    if (bytes[0] & 1) {
        // No word of a command line holds a character 0.
        requests = Split(std::string(bytes + 1, std::find(bytes + 1, bytes + size, 0)), '\n');
        requests.resize(std::min(requests.size(), most));
        return requests;
    }
    FuzzedDataProvider data(bytes + 1, size - 1);
    do requests.push_back(Request(data));
    while (requests.size() < most && data.ConsumeBool());
    return requests;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    if (size == 0) return 0;
    Fuzzing::Try([&] {
        const std::vector<EffectRequest> requests =
            ParseEffectRequests(Requests(bytes, size), Fuzzing::Module(), Fuzzing::Folder().Path() + "/none");
        Fuzzing::ApplyTo(requests, width, height, frames);
    });
    return 0;
}
