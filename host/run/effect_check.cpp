#include "host/run/effect_check.h"

#include <algorithm>

#include "host/base/errors.h"
#include "host/base/log.h"
#include "host/base/number_text.h"
#include "host/catalogue/catalogue.h"
#include "host/catalogue/effect_details.h"

namespace Nifikral {
namespace {

ValueRange SensibleOn(const ParameterInfo& info, const Scale& scale) {
    switch (MeasureOf(info)) {
        case Measure::Width:
            return {0, double(scale.width)};
        case Measure::Height:
            return {0, double(scale.height)};
        default:
            return {info.sensible.low,
                    std::min(info.sensible.high, info.largestShare * std::min(scale.width, scale.height))};
    }
}

std::string With(const std::string& effect, const ParameterSetting& setting, double number) {
    return effect + ": " + setting.property + "=" + NumberText(number);
}

}  // namespace

void RequireAcceptable(AVBased::IVideoProc& effect, const ParameterSetting& setting) {
    const std::string name = effect.GetName();
    if (const ParameterInfo* const info = FindParameter(name, setting.property))
        for (const double number : setting.value.Numbers())
            if (!info->bearable.Contains(number))
                throw HostError(ExitCode::Usage,
                                With(name, setting, number) + " is refused; use " + RangeText(info->bearable));
    const std::string value = setting.value.At(0, 1);
    if (!effect.SetProperty(setting.property.c_str(), value.c_str())) {
        const int code = FiledCode();
        throw HostError(ExitCode::Usage,
                        name + " refuses " + setting.property + "=" + value + ": " +
                            TakeFiledMessage().value_or("no reason given") + "; nifikral info " + name +
                            " shows what it takes",
                        code);
    }
}

void WarnWhereOdd(const std::string& effect, const ParameterSetting& setting, const Scale& scale) {
    const ParameterInfo* const info = FindParameter(effect, setting.property);
    if (!info) return;
    const ValueRange sensible = SensibleOn(*info, scale);
    for (const double number : setting.value.Numbers()) {
        if (sensible.Contains(number)) continue;
        PrintWarning(With(effect, setting, number) + " lies outside the sensible range " + RangeText(sensible));
        return;
    }
}

}  // namespace Nifikral
