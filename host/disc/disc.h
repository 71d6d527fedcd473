#pragma once

#include <string>
#include <vector>

#include "host/disc/disc_budget.h"

namespace Nifikral {

struct DiscOptions {
    std::string input;   ///< a project file, or a folder that is surveyed
    std::string output;  ///< an image (.iso) or a folder
    std::string format = "dvd";
    bool overwrite = false, dryRun = false;
    bool skipExisting = false;            ///< leave a disc that is there as it is
    bool confined = false;                ///< reach nothing but the project's folder and the output's
    std::vector<std::string> stageWords;  ///< of the command line, for the runs of its stages too
    std::string stage;                    ///< the only part to make, into the output, a folder; empty: the whole
};

/// A project with its plan.
struct PlannedDisc {
    DiscProject project;
    DiscFormat format = DiscFormat::Dvd;
    DiscPlan plan;
};

/// Reads the project or surveys the folder, and plans the disc. Throws all faults at once.
PlannedDisc PlanDisc(const DiscOptions& options);

/// The pages of a disc's menus. Throws what making them throws, and all faults of those that a disc cannot hold, of the
/// project `input`.
std::vector<DiscPage> PagesOf(const DiscProject& project, DiscFormat format, const std::string& input,
                              const EffectModule& module);

/// Prints the plan.
void PlanDiscRun(const DiscOptions& options, const EffectModule& module);

}  // namespace Nifikral
