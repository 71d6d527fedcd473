#pragma once

#include <cstddef>
#include <cstdint>

/// Pictures in arrays of any strides, and their way into the layout of the module's packed pictures and back.
namespace Nifikral::Python {

/// A picture in an array; a plane is one of a single channel. Steps are in bytes and may be negative.
struct ArrayView {
    std::uint8_t* data = nullptr;
    std::ptrdiff_t height = 0, width = 0, channels = 1;
    std::ptrdiff_t rowStep = 0, columnStep = 0, channelStep = 0;

    bool IsContiguous() const {
        return columnStep == channels && rowStep == width * channels && (channelStep == 1 || channels == 1);
    }
    std::size_t Bytes() const { return std::size_t(height) * std::size_t(width) * std::size_t(channels); }
    bool SameElementsAs(const ArrayView& other) const;
    /// Whether their memory may meet.
    bool Meets(const ArrayView& other) const;
};

/// The order of an array's first three channels.
enum class Order { Rgb, Bgr };

/// `to` has room for width x height pixels of four bytes, blue first, without padding. A picture without alpha becomes
/// opaque. It may be the same memory as a picture of four channels that lies in the same way.
void ToBgra(const ArrayView& from, Order order, std::uint8_t* to);
/// The way back; alpha is left out where the array has none, and colours become brightness where it has one channel.
void FromBgra(const std::uint8_t* from, const ArrayView& to, Order order);
/// Between views of the same shape.
void CopyElements(const ArrayView& from, const ArrayView& to);

}  // namespace Nifikral::Python
