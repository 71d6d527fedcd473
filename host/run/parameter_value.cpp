#include "host/run/parameter_value.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <optional>
#include <stdexcept>

#include "host/base/colour_text.h"
#include "host/base/nearest_names.h"
#include "host/base/number_text.h"
#include "host/base/split_text.h"

namespace Nifikral {
namespace {

constexpr std::pair<const char*, Easing> easings[] = {{"linear", Easing::Linear},
                                                      {"in", Easing::In},
                                                      {"out", Easing::Out},
                                                      {"in-out", Easing::InOut},
                                                      {"hold", Easing::Hold}};

Easing ParseEasing(const std::string& name) {
    std::string names;
    for (const auto& [known, easing] : easings) {
        if (name == known) return easing;
        names += (names.empty() ? "" : ", ") + std::string(known);
    }
    throw std::invalid_argument("\"" + name + "\" is no way to move; there are " + names);
}

// The whole text as a number; 0x and # start a number of base 16.
std::optional<double> ParseNumber(std::string text) {
    if (text.starts_with('#')) text = "0x" + text.substr(1);
    if (text.empty() || std::isspace(static_cast<unsigned char>(text.front()))) return std::nullopt;
    char* end = nullptr;
    const double number = std::strtod(text.c_str(), &end);
    if (*end != '\0' || !std::isfinite(number)) return std::nullopt;
    return number;
}

ValueRange TypeRange(PropertyType type) {
    switch (type) {
        case PropertyType::Int16:
            return {-32768, 32767};
        case PropertyType::Int32:
            return {-2147483648.0, 2147483647.0};
        case PropertyType::Int64:
            return {-9223372036854775808.0, 9223372036854774784.0};
        default:
            return {};
    }
}

// A choice by its number or its meaning.
double ReadChoice(const std::string& text, std::span<const Choice> choices) {
    std::string all;
    for (const Choice& choice : choices) {
        if (text == choice.meaning) return choice.value;
        all += (all.empty() ? "" : ", ") + std::to_string(choice.value) + " " + choice.meaning;
    }
    const std::optional<double> number = ParseNumber(text);
    if (!number) throw std::invalid_argument("\"" + text + "\" is none of its choices; there are " + all);
    return *number;
}

double ReadNumber(const std::string& text, const ParameterInfo& info) {
    if (!info.choices.empty()) return ReadChoice(text, info.choices);
    if (info.kind == Kind::Colour)
        if (const auto colour = ParseColour(text)) return *colour;
    if (const auto number = ParseNumber(text)) return *number;
    if (info.kind == Kind::Colour) throw std::invalid_argument("\"" + text + "\" is no colour" + ColourRemedy(text));
    throw std::invalid_argument("\"" + text + "\" is no number; give a number, A..B or @frame:value,...");
}

// The side of a picture that a measure is a share of.
double SideOf(Measure measure, const Scale& scale) {
    const int sides[] = {0, scale.width, scale.height, std::min(scale.width, scale.height)};
    return sides[int(measure)];
}

// Each part of a colour by itself.
double Mixed(std::uint32_t from, std::uint32_t to, double share) {
    std::uint32_t mixed = 0;
    for (const int shift : {16, 8, 0}) {
        const double a = from >> shift & 255, b = to >> shift & 255;
        mixed |= std::uint32_t(std::lround(a + (b - a) * share)) << shift;
    }
    return mixed;
}

}  // namespace

double Eased(Easing easing, double share) {
    switch (easing) {
        case Easing::In:
            return share * share;
        case Easing::Out:
            return share * (2 - share);
        case Easing::InOut:
            return share * share * (3 - 2 * share);
        case Easing::Hold:
            return share < 1 ? 0 : 1;
        case Easing::Linear:
            break;
    }
    return share;
}

ParameterValue::ParameterValue(const std::string& text, PropertyType type, const ParameterInfo& info)
    : m_type(type), m_measure(MeasureOf(info)), m_isColour(info.kind == Kind::Colour), m_text(text) {
    if (type == PropertyType::Text) return;
    if (text.starts_with('@')) {
        for (const std::string& part : Split(text.substr(1), ',')) {
            const std::size_t colon = part.find(':');
            if (colon == std::string::npos)
                throw std::invalid_argument("the key point \"" + part + "\" is not frame:value");
            const Moment moment = ParseMoment(part.substr(0, colon));
            if (moment.fromEnd) throw std::invalid_argument("the key point \"" + part + "\" counts from the end");
            Point point = ReadPoint(part.substr(colon + 1), type, info);
            point.frame = moment.amount;
            point.inSeconds = moment.inSeconds;
            m_points.push_back(point);
        }
        // Where both are used, only the frame rate decides which comes first.
        if (std::all_of(m_points.begin(), m_points.end(),
                        [&](const Point& point) { return point.inSeconds == m_points.front().inSeconds; }))
            RequireAscent();
    } else {
        constexpr std::size_t dots = 2;
        std::size_t begin = 0;
        for (std::size_t end; (end = text.find("..", begin)) != std::string::npos; begin = end + dots)
            m_points.push_back(ReadPoint(text.substr(begin, end - begin), type, info));
        m_points.push_back(ReadPoint(text.substr(begin), type, info));
        for (std::size_t i = 1; i < m_points.size(); ++i) m_points[i].frame = double(i) / double(m_points.size() - 1);
        m_overRun = Varies();
    }
}

void ParameterValue::RequireAscent() const {
    const auto fault = std::adjacent_find(m_points.begin(), m_points.end(),
                                          [](const Point& a, const Point& b) { return a.frame >= b.frame; });
    if (fault != m_points.end())
        throw std::invalid_argument("the times of the key points in \"" + m_text + "\" do not ascend from 0");
}

ParameterValue::Point ParameterValue::ReadPoint(const std::string& text, PropertyType type, const ParameterInfo& info) {
    Point point;
    const std::size_t wave = text.find('~');
    if (wave != std::string::npos) point.easing = ParseEasing(text.substr(wave + 1));
    std::string number = text.substr(0, wave);
    if (number.ends_with('%')) {
        const bool ownUnit = info.unit == std::string_view("%");
        if (MeasureOf(info) == Measure::None && !ownUnit)
            throw std::invalid_argument("\"" + number + "\" is a share of the picture, and this is no place or length");
        number.pop_back();
        point.isShare = !ownUnit;
    }
    point.value = ReadNumber(number, info);
    if (point.isShare) return point;
    if (type != PropertyType::Real && point.value != std::trunc(point.value))
        throw std::invalid_argument("\"" + text + "\" is no whole number");
    if (!TypeRange(type).Contains(point.value)) throw std::invalid_argument("\"" + text + "\" is out of range");
    return point;
}

bool ParameterValue::IsRelative() const {
    return std::any_of(m_points.begin(), m_points.end(),
                       [](const Point& point) { return point.isShare || point.inSeconds; });
}

ParameterValue ParameterValue::Resized(const Scale& from, const Scale& to) const {
    if (m_measure == Measure::None) return *this;
    ParameterValue result = *this;
    for (Point& point : result.m_points) {
        if (point.isShare) continue;
        const bool something = point.value > 0;
        point.value *= SideOf(m_measure, to) / SideOf(m_measure, from);
        if (m_type != PropertyType::Real) point.value = std::round(point.value);
        if (something && m_measure == Measure::ShorterSide && m_type != PropertyType::Real)
            point.value = std::max(point.value, 1.0);
    }
    return result;
}

ParameterValue ParameterValue::On(const Scale& scale) const {
    ParameterValue result = *this;
    for (Point& point : result.m_points) {
        if (point.isShare) point.value *= SideOf(m_measure, scale) / 100;
        if (point.isShare && m_type != PropertyType::Real) point.value = std::round(point.value);
        // On a small picture a length must not shrink to nothing, which no effect takes.
        if (point.isShare && m_measure == Measure::ShorterSide) point.value = std::max(point.value, 1.0);
        if (point.inSeconds) point.frame *= scale.frameRate;
        point.isShare = point.inSeconds = false;
    }
    result.RequireAscent();
    return result;
}

double ParameterValue::NumberAt(long long frame, long long frameCount) const {
    const double length = m_overRun ? double(std::max(frameCount - 1, 1LL)) : 1;
    const auto next = std::find_if(m_points.begin(), m_points.end(),
                                   [&](const Point& point) { return point.frame * length > double(frame); });
    if (next == m_points.begin()) return next->value;
    if (next == m_points.end()) return m_points.back().value;
    const Point& from = *(next - 1);
    const double begin = from.frame * length, end = next->frame * length;
    const double share = Eased(next->easing, (double(frame) - begin) / (end - begin));
    if (m_isColour) return Mixed(std::uint32_t(from.value), std::uint32_t(next->value), share);
    return from.value + (next->value - from.value) * share;
}

std::string ParameterValue::At(long long frame, long long frameCount) const {
    if (m_points.empty()) return m_text;
    const double value = NumberAt(frame, frameCount);
    if (m_type == PropertyType::Real) return NumberText(value);
    return std::to_string(std::llround(value));
}

std::vector<double> ParameterValue::Numbers() const {
    std::vector<double> numbers;
    for (const Point& point : m_points) numbers.push_back(point.value);
    return numbers;
}

}  // namespace Nifikral
