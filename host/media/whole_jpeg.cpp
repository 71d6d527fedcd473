#include "host/media/whole_jpeg.h"

#include <algorithm>
#include <cstddef>

namespace Nifikral {

bool IsWholeJpeg(std::span<const std::uint8_t> file) {
    constexpr std::uint8_t escape = 0xff, stuffing = 0, endOfImage = 0xd9, temporary = 0x01;
    const auto isAlone = [](std::uint8_t mark) {
        return mark == stuffing || mark == temporary || (mark >= 0xd0 && mark <= 0xd8);
    };
    std::size_t at = 0;
    while ((at = std::size_t(std::find(file.begin() + std::ptrdiff_t(at), file.end(), escape) - file.begin())) + 1 <
           file.size()) {
        const std::uint8_t mark = file[at + 1];
        if (mark == endOfImage) return true;
        if (mark == escape) {
            ++at;
        } else if (isAlone(mark)) {
            at += 2;
        } else {
            // A segment is passed over by its length: a preview inside one has an end of its own.
            if (at + 3 >= file.size()) return false;
            at = std::min(file.size(), at + 2 + file[at + 2] * 256u + file[at + 3]);
        }
    }
    return false;
}

}  // namespace Nifikral
