// The parameters of the frei0r plug-ins: any numbers, colours, project files and times in any order; and effects as the
// other bridges drive them, with any texts, on pictures of any layout.

#include <fuzzer/FuzzedDataProvider.h>

#include <memory>

#include "avbase/avbase_srcutils/pixel_formats.h"
#include "bridges/common/borrowed_frame.h"
#include "bridges/common/bridged_effect.h"
#include "bridges/frei0r/plugin.h"
#include "fuzz/temporary_folder.h"
#include "host/catalogue/catalogue.h"

using namespace Nifikral;
using namespace Nifikral::Frei0r;

namespace {

double AnyNumber(FuzzedDataProvider& data) {
    constexpr double usual[] = {0, 0.5, 1, -1, 2, 1e300, -1e300, 1e-300, __builtin_nan(""), __builtin_inf()};
    switch (data.ConsumeIntegralInRange(0, 3)) {
        case 0:
            return data.PickValueInArray(usual);
        case 1:
            return data.ConsumeFloatingPoint<double>();
        default:
            return data.ConsumeProbability<double>();
    }
}

const char* AnyName(FuzzedDataProvider& data, bool generates) {
    std::vector<const char*> names;
    for (const EffectInfo& effect : Catalogue())
        if (bool(effect.traits & (generates ? menu : generator)) == generates) names.push_back(effect.name);
    return names[data.ConsumeIntegralInRange<std::size_t>(0, names.size() - 1)];
}

constexpr int mostSteps = 32;

void UseFilter(FuzzedDataProvider& data) {
    const char* const name = AnyName(data, false);
    const unsigned width = 8 * data.ConsumeIntegralInRange(0U, 6U), height = data.ConsumeIntegralInRange(0U, 40U);
    PluginInfo about{};
    Filter::Describe(name, about);
    const std::unique_ptr<Instance> instance(Filter::Construct(name, width, height));
    if (!instance) __builtin_trap();
    std::vector<unsigned char> input(std::size_t(width) * height * 4, 0x80), output(input.size());
    for (int step = 0; step < mostSteps && data.remaining_bytes() > 0; ++step) {
        const int parameter = data.ConsumeIntegralInRange(-1, about.parameterCount);
        Frei0r::ParameterInfo described{};
        Filter::DescribeParameter(name, parameter, described);
        if (described.name && described.type == colourParameter) {
            const Colour colour{float(AnyNumber(data)), float(AnyNumber(data)), float(AnyNumber(data))};
            instance->Set(&colour, parameter);
        } else {
            const double number = AnyNumber(data);
            instance->Set(&number, parameter);
        }
        double value[3] = {};
        instance->Get(value, parameter);
        if (data.ConsumeBool())
            instance->Update(AnyNumber(data), input.data(), data.ConsumeBool() ? input.data() : output.data());
    }
}

void UseSource(FuzzedDataProvider& data) {
    static const Fuzzing::TemporaryFolder folder;
    constexpr std::string_view project =
        R"({"width": 64, "height": 36, "duration": 1, "additionSourcePaths": ["p.ppm", "p.ppm"],
            "textInfos": [{"text": "Title", "size": 9, "box": [4, 4, 60, 20]}]})";
    static const std::string paths[] = {folder.Write("menu.json", std::string(project)), "", folder.Path(),
                                        folder.Path() + "/p.ppm"};
    const unsigned width = 8 * data.ConsumeIntegralInRange(1U, 6U), height = data.ConsumeIntegralInRange(1U, 40U);
    const std::unique_ptr<Instance> instance(Source::Construct(AnyName(data, true), width, height));
    std::vector<unsigned char> output(std::size_t(width) * height * 4);
    for (int step = 0; step < 6 && data.remaining_bytes() > 0; ++step) {
        const char* path = paths[std::max(0, data.ConsumeIntegralInRange(-3, 3))].c_str();
        const int parameter = data.ConsumeIntegralInRange(-1, 1);
        instance->Set(&path, parameter);
        instance->Get(&path, parameter);
        instance->Update(AnyNumber(data), nullptr, output.data());
    }
}

void UseBridged(FuzzedDataProvider& data) {
    const BridgeModule& bridge = TheBridgeModule();
    if (!bridge.module) __builtin_trap();
    BridgedEffect effect(*bridge.module, AnyName(data, false));
    const std::vector<PropertyInfo> properties = effect.Properties();
    const AVBased::FormatInfo& format = data.PickValueInArray(AVBased::formats);
    const unsigned width = data.ConsumeIntegralInRange(0U, 40U), height = data.ConsumeIntegralInRange(0U, 40U);
    std::vector<std::vector<unsigned char>> memory;
    std::vector<BorrowedPlane> planes;
    for (unsigned p = 0; p < format.PlaneCount(); ++p) {
        // Rounded up, as some programs have it.
        const AVBased::PlaneShape& shape = format.planes[p];
        const unsigned rowBytes = (width + shape.pixels - 1) / shape.pixels * shape.bytes;
        const unsigned pitch = rowBytes + data.ConsumeIntegralInRange(0U, 5U),
                       rows = (height + shape.rows - 1) / shape.rows;
        memory.emplace_back(std::size_t(pitch) * rows, static_cast<unsigned char>(37 * p));
        planes.push_back({memory.back().data(), rowBytes, pitch, rows});
    }
    BorrowedFrame frame(format.code, width, height, planes);
    for (int step = 0; step < mostSteps && data.remaining_bytes() > 0; ++step) {
        const PropertyInfo& property = properties[data.ConsumeIntegralInRange<std::size_t>(0, properties.size() - 1)];
        const bool countsPasses = property.name == "blur_count" || property.name == "sharpen_count";
        const std::string text = data.ConsumeBool()   ? std::to_string(data.ConsumeIntegralInRange(-300, 300))
                                 : data.ConsumeBool() ? std::to_string(AnyNumber(data))
                                                      : data.ConsumeRandomLengthString(12);
        if (!countsPasses) effect.Set(property.name, text);
        effect.Text(property.name);
        if (data.ConsumeBool()) effect.Renew();
        if (data.ConsumeBool()) frame.CropRightAndBottom(data.ConsumeIntegralInRange(0U, width), 1);
        effect.Process(frame, data.ConsumeIntegralInRange(-3, 60));
    }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) { return setenv("NIFIKRAL_MODULE", NIFIKRAL_MODULE_FILE, 1); }

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    FuzzedDataProvider data(bytes, size);
    switch (data.ConsumeIntegralInRange(0, 4)) {
        case 0:
            UseSource(data);
            break;
        case 1:
        case 2:
            UseBridged(data);
            break;
        default:
            UseFilter(data);
    }
    return 0;
}
