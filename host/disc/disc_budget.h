#pragma once

#include <string>
#include <vector>

#include "host/catalogue/effect_module.h"
#include "host/disc/disc_page.h"
#include "host/disc/disc_project.h"
#include "host/disc/film_facts.h"
#include "host/films/project_reader.h"

/// How a project's titles share a disc's space.
namespace Nifikral {

enum class DiscFormat { Dvd, Web };

struct PlannedTitle {
    double seconds = 0;
    bool copied = false;           ///< it goes onto the disc as it is coded
    int besideRate = silenceRate;  ///< of sound and subtitles on the disc, in kbit/s
    long long bytes = 0;      ///< that it takes on the disc, of browsers about; until ShareSpace, what a copied one has
    std::string description;  ///< of its source, in words
};

struct DiscPlan {
    std::vector<PlannedTitle> titles;
    int videoRate = 0;  ///< of the films that are encoded, in kbit/s; 0: none is
    int menuPages = 0;  ///< as far as is known before menus are laid out
    long long menuBytes = 0;
    double makingSeconds = 0;  ///< of films and menus, as far as it was tried; 0: not known
    long long usedBytes = 0;   ///< of everything
};

/// Of a menu's pictures, in kbit/s.
inline constexpr int menuVideoRate = 6000;
/// Below this rate pictures of this size visibly suffer.
inline constexpr int lowestGoodRate = 3000;

/// Opens all that the project names. What is wrong with it is filed in `faults`; what is done otherwise than one may
/// expect is printed. The space is shared out for a DVD.
DiscPlan PlanDisc(const DiscProject& project, DiscFormat format, Faults& faults);

/// Finds the rate at which the titles fit, and what everything takes. Too little space is filed in `faults`.
void ShareSpace(DiscPlan& plan, const DiscProject& project, Faults& faults);

/// Checks that the output can be made, and that there is room for it and what is made on the way.
void CheckDiscOutput(const std::string& output, DiscFormat format, bool overwrite, const DiscPlan& plan,
                     Faults& faults);

/// Finds out by short trials how long the films of a DVD and those of its menus take.
void EstimateTime(DiscPlan& plan, const DiscProject& project, const std::vector<DiscPage>& pages,
                  const EffectModule& module);

/// "4.70 GB".
std::string Gigabytes(long long bytes);

/// The plan in lines for people.
std::string DescribePlan(const DiscProject& project, DiscFormat format, const DiscPlan& plan);

}  // namespace Nifikral
