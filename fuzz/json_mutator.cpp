#include "fuzz/json_mutator.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace {

using Json = nlohmann::ordered_json;
using Random = std::minstd_rand;

struct Input {
    std::string head;
    Json json;
};

std::optional<Input> Parse(const std::uint8_t* data, std::size_t size) {
    const std::string text(data, data + size);
    const std::size_t begin = std::min(text.find('{'), size);
    Json json = Json::parse(text.substr(begin), nullptr, false);
    if (!json.is_object()) return std::nullopt;
    return Input{text.substr(0, begin), std::move(json)};
}

// 0 where it is too long.
std::size_t Store(const Input& input, std::uint8_t* data, std::size_t largest) {
    const std::string text = input.head + input.json.dump(-1, ' ', false, Json::error_handler_t::replace);
    if (text.size() > largest) return 0;
    std::copy(text.begin(), text.end(), data);
    return text.size();
}

// The root first.
void Collect(Json& json, std::vector<Json*>& values) {
    values.push_back(&json);
    if (!json.is_structured()) return;
    for (Json& inner : json) Collect(inner, values);
}

Json& AnyValue(Json& json, Random& random) {
    std::vector<Json*> values;
    Collect(json, values);
    return *values[random() % values.size()];
}

Json Unusual(Random& random) {
    static const Json values[] = {nullptr,
                                  true,
                                  false,
                                  "",
                                  "p.ppm",
                                  "true",
                                  "50%",
                                  "1/0",
                                  "-1",
                                  Json::array(),
                                  Json::object(),
                                  {0, 0},
                                  {1, 2, 3, 4},
                                  {-1, 70000},
                                  0,
                                  1,
                                  2,
                                  -1,
                                  0.5,
                                  1e-300,
                                  1e300,
                                  -1e300,
                                  255,
                                  256,
                                  65536,
                                  2147483647,
                                  -2147483647 - 1,
                                  4294967296,
                                  std::string(999, 'x')};
    return values[random() % std::size(values)];
}

void ChangeScalar(Json& value, Random& random) {
    if (value.is_string()) {
        std::string text = value.get<std::string>();
        const std::size_t size = text.size(), room = size + 8;
        text.resize(room);
        text.resize(LLVMFuzzerMutate(reinterpret_cast<std::uint8_t*>(text.data()), size, room));
        value = text;
    } else if (value.is_number()) {
        value = value.get<double>() + int(random() % 65) - 32;
    } else {
        value = Unusual(random);
    }
}

void Change(Json& json, Random& random) {
    Json& value = AnyValue(json, random);
    switch (random() % 6) {
        case 0:
            value = Unusual(random);
            break;
        case 1:
            if (value.is_structured() && !value.empty())
                value.erase(std::next(value.begin(), long(random() % value.size())));
            break;
        case 2: {
            Json copy = AnyValue(json, random);
            value = std::move(copy);
            break;
        }
        case 3: {
            Json copy = AnyValue(json, random);
            if (value.is_array()) value.push_back(std::move(copy));
            break;
        }
        default:
            ChangeScalar(value, random);
    }
    if (!json.is_object()) json = Json::object();
}

}  // namespace

std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t largest, unsigned seed) {
    Random random(seed);
    std::optional<Input> input = random() % 6 ? Parse(data, size) : std::nullopt;
    if (!input) return LLVMFuzzerMutate(data, size, largest);
    for (unsigned change = 0; change <= random() % 3; ++change) Change(input->json, random);
    const std::size_t stored = Store(*input, data, largest);
    return stored ? stored : LLVMFuzzerMutate(data, size, largest);
}

std::size_t LLVMFuzzerCustomCrossOver(const std::uint8_t* first, std::size_t firstSize, const std::uint8_t* second,
                                      std::size_t secondSize, std::uint8_t* made, std::size_t largest, unsigned seed) {
    Random random(seed);
    std::optional<Input> one = Parse(first, firstSize), other = Parse(second, secondSize);
    if (!one || !other) return 0;
    AnyValue(one->json, random) = AnyValue(other->json, random);
    return one->json.is_object() ? Store(*one, made, largest) : 0;
}
