#include "host/disc/disc.h"

#include <filesystem>

#include "host/base/standard_output.h"
#include "host/disc/disc_json.h"
#include "host/disc/disc_menus.h"
#include "host/disc/disc_survey.h"
#include "host/disc/dvd_author.h"

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

std::vector<DiscPage> PagesOf(const DiscProject& project, DiscFormat format, const std::string& input,
                              const EffectModule& module) {
    std::vector<DiscPage> pages = PagesOfDisc(project, module);
    Faults faults(input);
    if (format == DiscFormat::Dvd) CheckPages(project, pages, faults);
    faults.ThrowIfAny();
    return pages;
}

void PlanDiscRun(const DiscOptions& options, const EffectModule& module) {
    PlannedDisc disc = PlanDisc(options);
    const std::vector<DiscPage> pages = PagesOf(disc.project, disc.format, options.input, module);
    if (disc.format == DiscFormat::Dvd) EstimateTime(disc.plan, disc.project, pages, module);
    PrintResult(DescribePlan(disc.project, disc.format, disc.plan));
}

}  // namespace Nifikral
