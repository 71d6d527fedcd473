#pragma once

#include <type_traits>

/// Compiles one routine for several instruction sets. Every variant gives the same bytes; each can be asked for by
/// itself, so that tests compare them and benchmarks set them side by side.
namespace AVBased {

enum class InstructionSet { Baseline, Avx2 };
inline constexpr InstructionSet allInstructionSets[] = {InstructionSet::Baseline, InstructionSet::Avx2};

/// Whether this processor and system can run a variant.
bool IsUsable(InstructionSet set);
/// The last usable one of allInstructionSets.
InstructionSet BestInstructionSet();

/// One function for each instruction set.
template <class Signature>
struct Variants;

template <class Result, class... Arguments>
struct Variants<Result(Arguments...)> {
    using Routine = Result (*)(Arguments...);
    Routine baseline, avx2;

    constexpr Routine For(InstructionSet set) const { return set == InstructionSet::Avx2 ? avx2 : baseline; }
};

#if defined(__x86_64__)
/// In front of a hand-written variant, and of every lambda and helper in it.
#define NIFIKRAL_AVX2 gnu::target("avx2,bmi,bmi2,lzcnt,popcnt")
#else
#define NIFIKRAL_AVX2 gnu::flatten
#endif

namespace Details {

// "flatten" pulls the routine and all it calls into each wrapper, where it is compiled for the wrapper's target. The
// target names no "arch", which would forbid the inlining, and no fused multiply-add, which would change results.
template <auto routine, class Result, class... Arguments>
struct Compiled {
    [[gnu::flatten]] static Result Baseline(Arguments... arguments) { return routine(arguments...); }
    [[NIFIKRAL_AVX2, gnu::flatten]] static Result Avx2(Arguments... arguments) { return routine(arguments...); }
};

template <auto routine, class Result, class... Arguments>
constexpr Variants<Result(Arguments...)> Compile(Result (*)(Arguments...)) {
    return {&Compiled<routine, Result, Arguments...>::Baseline, &Compiled<routine, Result, Arguments...>::Avx2};
}

}  // namespace Details

/// A plain routine in all its variants. The routine itself and whatever it calls must be inlinable where it is named:
/// in the same unit or in a header.
template <auto routine>
inline constexpr auto variantsOf = Details::Compile<routine>(routine);

}  // namespace AVBased
