#pragma once

#include <cstdint>
#include <vector>

#include "effects/base/frame_views.h"
#include "effects/base/instruction_sets.h"

namespace AVBased {

/// A picture for painting, whatever its layout: each line is three rows of bytes, one a channel, all as wide as the
/// picture. Lines are read once each, from the top, and a line is written only after it has been read.
class OilPicture {
 public:
    unsigned width = 0, height = 0;
    unsigned intensity = 0;                  ///< the channel that decides a pixel's class
    unsigned columnShift = 0, rowShift = 0;  ///< channels 1 and 2 are written for the last pixel of each such cell

    virtual void Read(unsigned y, std::uint8_t* const channel[3]) = 0;
    virtual void Write(unsigned y, const std::uint8_t* const channel[3]) = 0;

 protected:
    ~OilPicture() = default;
};

/// Blue, green and red. Deliberate: paint has no alpha.
class PackedOilPicture final : public OilPicture {
 public:
    PackedOilPicture(const PackedView& view, InstructionSet set);
    void Read(unsigned y, std::uint8_t* const channel[3]) override;
    void Write(unsigned y, const std::uint8_t* const channel[3]) override;

 private:
    PackedView m_view;
    InstructionSet m_set;
};

/// Luma and chroma, each chroma sample under all the luma that it serves.
class PlanarOilPicture final : public OilPicture {
 public:
    PlanarOilPicture(const PlanarView& view, InstructionSet set);
    void Read(unsigned y, std::uint8_t* const channel[3]) override;
    void Write(unsigned y, const std::uint8_t* const channel[3]) override;

 private:
    void ReadChroma(const ComponentView& plane, unsigned row, std::vector<std::uint8_t>& wide) const;
    void WriteChroma(const ComponentView& plane, unsigned row, const std::uint8_t* from) const;

    ComponentView m_luma, m_chroma[2];
    void (*m_widen)(const std::uint8_t* from, unsigned count, std::uint8_t* to);
    void (*m_narrow)(const std::uint8_t* from, unsigned count, std::uint8_t* to);
    std::vector<std::uint8_t> m_wide[2];
};

}  // namespace AVBased
