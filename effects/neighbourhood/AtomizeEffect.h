#pragma once

#include <vector>

#include "effects/base/instruction_sets.h"
#include "effects/base/settings_effect.h"

namespace AVBased {

inline constexpr char effectNameAtomize[] = "atomize";

/// Random steps from a place to one nearby, in a plane whose rows are `pitch` samples apart.
class SpraySteps {
 public:
    static constexpr unsigned places = 1 << 14;
    struct Key {
        std::uint32_t seed;
        int radius;
        unsigned columnShift, rowShift;
        int pitch;
        bool operator==(const Key&) const = default;
    };

    /// Fills the table, unless it is there.
    void Prepare(const Key& key, InstructionSet set);
    /// How far on the sources of a stretch of samples lie, from a random place of the table on.
    const std::int32_t* At(std::uint32_t random) const { return &m_steps[random % places]; }

 private:
    Key m_key{};
    std::vector<std::int32_t> m_steps;
};

struct AtomizeSettings {
    std::int32_t radius = 6;  ///< in pixels; held within 0 to 255
    std::uint32_t seed = 0;
};

/// The picture as spray: most pixels stay where they are or close by, so that small things remain, and some come, alpha
/// included, from as far as the radius. The places follow from the seed and the frame's position alone (place_hash.h).
///
/// Steps come from a table: of the seed's number i, which is RowHash(MixBits(~seed))(i), let s be the cube of byte 0,
/// shifted right by 16; then ((2 x byte 1 - 255) x s x (2 x radius + 1) + 2^16) >> 17 is step i in columns, and byte 2
/// gives the rows downwards. Of chroma, whose samples cover 2^k columns or rows, both shifts are greater by k. Pixel x
/// of a row takes step (hash of plane 0 at place x / 1024, modulo 2^14) + x % 1024; a chroma sample goes by the first
/// pixel that it covers. A place outside the plane is the nearest one inside.
class CAtomizeVideoImageEffect : public CSettingsEffect<AtomizeSettings> {
 public:
    CAtomizeVideoImageEffect();
    void InnerProcFrame(ImagePostion* record, int position, IRawVideoFrame* frame) override;

 private:
    SpraySteps m_steps[2];  ///< of luma and of chroma
};

}  // namespace AVBased
