#include "host/catalogue/effect_search.h"

#include <algorithm>
#include <cctype>
#include <sstream>

namespace Nifikral {
namespace {

// Words in small letters; what stands between is no letter and no digit.
std::vector<std::string> WordsOf(const std::string& text) {
    std::string plain;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        plain += std::isalnum(byte) || byte > 127 ? char(std::tolower(byte)) : ' ';
    }
    std::istringstream stream(plain);
    std::vector<std::string> words;
    for (std::string word; stream >> word;) words.push_back(word);
    return words;
}

}  // namespace

std::vector<std::string> Synonyms(const EffectInfo& effect) {
    constexpr std::string_view separator = ", ";
    std::vector<std::string> synonyms;
    std::string_view rest = effect.synonyms;
    while (!rest.empty()) {
        const std::size_t end = rest.find(separator);
        synonyms.emplace_back(rest.substr(0, end));
        rest = end == std::string_view::npos ? std::string_view() : rest.substr(end + separator.size());
    }
    return synonyms;
}

bool Mentions(const std::string& text, const std::string& query) {
    const std::vector<std::string> words = WordsOf(text);
    const std::vector<std::string> wanted = WordsOf(query);
    // "pixelated" is to find "pixelate" too.
    constexpr std::size_t shortestStem = 4;
    return std::all_of(wanted.begin(), wanted.end(), [&](const std::string& want) {
        return std::any_of(words.begin(), words.end(), [&](const std::string& word) {
            return word.starts_with(want) || (word.size() >= shortestStem && want.starts_with(word));
        });
    });
}

bool Mentions(const EffectInfo& effect, const std::string& query) {
    std::ostringstream text;
    text << effect.name << " " << effect.category << " " << effect.summary << " " << effect.synonyms;
    return Mentions(text.str(), query);
}

std::vector<std::string> EffectsFor(const std::string& query) {
    std::vector<std::string> named, mentioned;
    for (const EffectInfo& effect : Catalogue()) {
        if (effect.traits & generator) continue;
        const std::vector<std::string> synonyms = Synonyms(effect);
        const bool isNamed = std::any_of(synonyms.begin(), synonyms.end(), [&](const std::string& synonym) {
            return WordsOf(synonym) == WordsOf(query);
        });
        if (isNamed) named.emplace_back(effect.name);
        if (Mentions(effect, query)) mentioned.emplace_back(effect.name);
    }
    return named.empty() ? mentioned : named;
}

}  // namespace Nifikral
