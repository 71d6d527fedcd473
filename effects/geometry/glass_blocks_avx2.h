#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

/// Rows of bytes magnified so much that a load of 16 bytes holds all that 16 magnified bytes are mixed of.
namespace AVBased {

/// How to mix the bytes of a row with their right neighbours, in blocks of 32 magnified bytes.
class GlassBlocks {
 public:
    /// What a row is mixed in: alone, before it is mixed with the row below, or together with that one.
    enum class Order { RowByRow, TwoRows };

    /// For each column the sample that it shows and the share of the right neighbour, or of the one below, in 1/256;
    /// and the bytes of a sample. Nothing where the blocks do not serve.
    static std::optional<GlassBlocks> Make(const std::vector<unsigned>& columns,
                                           const std::vector<std::uint8_t>& shares, unsigned sampleBytes, Order order);

    /// How much is read past the last neighbour of a row.
    static constexpr unsigned readBeyond = 16;
    /// The size of a row that MixColumns writes and MixRows reads, each by whole blocks.
    std::size_t LineBytes() const { return m_shares.size() + 32; }

    /// Mixes a whole row, for MixRows, which wants its bytes less 128.
    void MixColumns(std::uint8_t* to, const std::uint8_t* row) const;
    /// to[begin] to to[end - 1] of two such rows, by the share of the second one in 1/256.
    static void MixRows(std::uint8_t* to, const std::uint8_t* a, const std::uint8_t* b, unsigned share,
                        std::size_t begin, std::size_t end);
    /// The same of two rows as they are: the column's share is that of the byte below, `share` that of the right one.
    void MixFour(std::uint8_t* to, const std::uint8_t* row, const std::uint8_t* below, unsigned share,
                 std::size_t begin, std::size_t end) const;

 private:
    // For each half of a block.
    std::vector<std::uint32_t> m_bases;   // where the load starts
    std::vector<std::uint8_t> m_picks;    // which loaded bytes each pair takes
    std::vector<std::uint16_t> m_shares;  // RowByRow: the weights of a pair, as two bytes
};

}  // namespace AVBased
