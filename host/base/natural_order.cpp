#include "host/base/natural_order.h"

#include <algorithm>
#include <cctype>

namespace Nifikral {
namespace {

bool IsDigit(char c) { return c >= '0' && c <= '9'; }
int Folded(char c) { return std::tolower(static_cast<unsigned char>(c)); }

// Takes the number at the front, without its leading zeros.
std::string_view TakeNumber(std::string_view& text) {
    const auto end = std::find_if_not(text.begin(), text.end(), IsDigit);
    std::string_view number(text.data(), std::size_t(end - text.begin()));
    text.remove_prefix(number.size());
    number.remove_prefix(std::min(number.find_first_not_of('0'), number.size()));
    return number;
}

}  // namespace

bool ComesBefore(std::string_view a, std::string_view b) {
    std::string_view restA = a, restB = b;
    while (!restA.empty() && !restB.empty()) {
        if (IsDigit(restA[0]) && IsDigit(restB[0])) {
            const std::string_view numberA = TakeNumber(restA), numberB = TakeNumber(restB);
            if (numberA.size() != numberB.size()) return numberA.size() < numberB.size();
            if (numberA != numberB) return numberA < numberB;
        } else {
            if (Folded(restA[0]) != Folded(restB[0])) return Folded(restA[0]) < Folded(restB[0]);
            restA.remove_prefix(1);
            restB.remove_prefix(1);
        }
    }
    if (restA.empty() != restB.empty()) return restA.empty();
    return a < b;
}

}  // namespace Nifikral
