#pragma once

#include <cstddef>
#include <type_traits>

/// A routine in a variant for each instruction set. There is one way to choose: variantsOf<routine>.For(set). Every
/// variant gives the same bytes; each can be asked for by itself, so that tests compare them and benchmarks set them
/// side by side.
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

// AVX2 and what every processor with it has as well. No "arch", which would forbid inlining, and no fused multiply-add,
// which would change results.
#if defined(__x86_64__)
#define NIFIKRAL_AVX2_FEATURES "avx2,bmi,bmi2,lzcnt,popcnt"
/// In front of a hand-written variant, and of every lambda and helper in it.
#define NIFIKRAL_AVX2 gnu::target(NIFIKRAL_AVX2_FEATURES)
#define NIFIKRAL_PRAGMA(...) _Pragma(#__VA_ARGS__)
#define NIFIKRAL_EXPANDED_PRAGMA(...) NIFIKRAL_PRAGMA(__VA_ARGS__)
/// Around hand-written variants and everything defined for them, after the last include.
#if defined(__clang__)
#define NIFIKRAL_BEGIN_AVX2 \
    NIFIKRAL_EXPANDED_PRAGMA(clang attribute push(__attribute__((target(NIFIKRAL_AVX2_FEATURES))), apply_to = function))
#define NIFIKRAL_END_AVX2 NIFIKRAL_PRAGMA(clang attribute pop)
#else
#define NIFIKRAL_BEGIN_AVX2 \
    NIFIKRAL_PRAGMA(GCC push_options) NIFIKRAL_EXPANDED_PRAGMA(GCC target(NIFIKRAL_AVX2_FEATURES))
#define NIFIKRAL_END_AVX2 NIFIKRAL_PRAGMA(GCC pop_options)
#endif
inline constexpr bool hasAvx2Variants = true;
#else
#define NIFIKRAL_AVX2 gnu::flatten
/// The sources *_avx2.cpp are not part of the build.
inline constexpr bool hasAvx2Variants = false;
#endif

namespace Details {

// "flatten" pulls the routine and all it calls into each wrapper, where it is compiled for the wrapper's target.
template <auto routine, class Result, class... Arguments>
struct Compiled {
    [[gnu::flatten]] static Result Baseline(Arguments... arguments) { return routine(arguments...); }
    [[NIFIKRAL_AVX2, gnu::flatten]] static Result Avx2(Arguments... arguments) { return routine(arguments...); }
};

template <auto routine, auto avx2, class Result, class... Arguments>
constexpr Variants<Result(Arguments...)> VariantsOf(Result (*)(Arguments...)) {
    using CompiledRoutine = Compiled<routine, Result, Arguments...>;
    if constexpr (std::is_null_pointer_v<decltype(avx2)>)
        return {&CompiledRoutine::Baseline, &CompiledRoutine::Avx2};
    else if constexpr (hasAvx2Variants)
        return {routine, avx2};
    else
        return {routine, routine};
}

}  // namespace Details

/// A routine in all its variants, as the compiler makes them: it and whatever it calls must be inlinable where it is
/// named, in the same unit or in a header. Or with the variant that is written by hand in a unit *_avx2.
template <auto routine, auto avx2 = nullptr>
inline constexpr auto variantsOf = Details::VariantsOf<routine, avx2>(routine);

}  // namespace AVBased
