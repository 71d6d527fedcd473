#include "host/base/nearest_names.h"

#include <algorithm>
#include <cctype>
#include <numeric>

namespace Nifikral {
namespace {

char Lower(char c) { return char(std::tolower(static_cast<unsigned char>(c))); }

// How many letters have to be put in, left out or changed; case does not count.
std::size_t Distance(const std::string& a, const std::string& b) {
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t(0));
    for (std::size_t i = 0; i < a.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i + 1;
        for (std::size_t j = 0; j < b.size(); ++j) {
            const std::size_t changed = diagonal + (Lower(a[i]) != Lower(b[j]));
            diagonal = row[j + 1];
            row[j + 1] = std::min({changed, row[j] + 1, row[j + 1] + 1});
        }
    }
    return row.back();
}

bool Contains(const std::string& text, const std::string& part) {
    return part.size() >= 3 && std::search(text.begin(), text.end(), part.begin(), part.end(),
                                           [](char a, char b) { return Lower(a) == Lower(b); }) != text.end();
}

}  // namespace

std::vector<std::string> NearestNames(const std::string& name, const std::vector<std::string>& candidates) {
    constexpr std::size_t most = 3;
    std::vector<std::pair<std::size_t, std::string>> near;
    for (const std::string& candidate : candidates) {
        const std::size_t distance = Distance(name, candidate);
        if (Contains(candidate, name) || Contains(name, candidate))
            near.emplace_back(std::min<std::size_t>(distance, 1), candidate);
        else if (distance <= std::max<std::size_t>(1, name.size() / 3))
            near.emplace_back(distance, candidate);
    }
    std::stable_sort(near.begin(), near.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<std::string> names;
    for (const auto& [distance, candidate] : near)
        if (names.size() < most) names.push_back(candidate);
    return names;
}

std::string DidYouMean(const std::string& name, const std::vector<std::string>& candidates) {
    const std::vector<std::string> names = NearestNames(name, candidates);
    if (names.empty()) return "";
    std::string text = "; did you mean " + names.front();
    for (std::size_t i = 1; i < names.size(); ++i) text += (i + 1 < names.size() ? ", " : " or ") + names[i];
    return text + "?";
}

}  // namespace Nifikral
