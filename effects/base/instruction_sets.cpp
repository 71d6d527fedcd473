#include "effects/base/instruction_sets.h"

namespace AVBased {

bool IsUsable(InstructionSet set) {
#if defined(__x86_64__)
    if (set == InstructionSet::Avx2)
        return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi") && __builtin_cpu_supports("bmi2") &&
               __builtin_cpu_supports("popcnt");
#endif
    return set == InstructionSet::Baseline;
}

InstructionSet BestInstructionSet() {
    static const InstructionSet best = IsUsable(InstructionSet::Avx2) ? InstructionSet::Avx2 : InstructionSet::Baseline;
    return best;
}

}  // namespace AVBased
