#include "host/disc/disc.h"

#include <filesystem>

#include "host/base/standard_output.h"
#include "host/disc/disc_json.h"
#include "host/disc/disc_survey.h"

namespace Nifikral {

PlannedDisc PlanDisc(const DiscOptions& options) {
    PlannedDisc disc;
    disc.format = options.format == "web" ? DiscFormat::Web : DiscFormat::Dvd;
    std::error_code error;
    Faults faults(options.input);
    disc.project = std::filesystem::is_directory(options.input, error) ? SurveyFolder(options.input)
                                                                       : ReadDiscProject(options.input, faults);
    disc.plan = PlanDisc(disc.project, disc.format, faults);
    CheckDiscOutput(options.output, disc.format, options.overwrite, disc.plan, faults);
    faults.ThrowIfAny();
    return disc;
}

void PlanDiscRun(const DiscOptions& options, const EffectModule& module) {
    PlannedDisc disc = PlanDisc(options);
    if (disc.format == DiscFormat::Dvd) EstimateTime(disc.plan, disc.project, module);
    PrintResult(DescribePlan(disc.project, disc.format, disc.plan));
}

}  // namespace Nifikral
