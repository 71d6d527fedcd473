#include "host/studio/studio_json.h"

#include <cmath>

#include "host/base/number_text.h"
#include "host/studio/web_message.h"

namespace Nifikral {
namespace {

// Brackets that are open at once at most, texts left aside.
std::size_t DepthOf(const std::string& text) {
    std::size_t depth = 0, deepest = 0;
    bool inText = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char letter = text[i];
        if (inText) {
            if (letter == '\\') ++i;
            inText = letter != '"';
        } else if (letter == '"') {
            inText = true;
        } else if (letter == '{' || letter == '[') {
            deepest = std::max(deepest, ++depth);
        } else if ((letter == '}' || letter == ']') && depth > 0) {
            --depth;
        }
    }
    return deepest;
}

[[noreturn]] void Refuse(const char* key, const std::string& what) {
    throw WebError(400, "\"" + std::string(key) + "\" " + what);
}

}  // namespace

Json ParseWebJson(const std::string& text) {
    constexpr std::size_t deepest = 32;
    if (DepthOf(text) > deepest) throw WebError(400, "the JSON is nested deeper than 32; no request needs that");
    try {
        return Json::parse(text, nullptr, true, true);
    } catch (const Json::exception& error) {
        throw WebError(400, std::string("this is no JSON: ") + error.what());
    }
}

std::string JsonText(const Json& json) { return json.dump(-1, ' ', false, Json::error_handler_t::replace); }

const Json* MemberOf(const Json& object, const char* key) {
    if (!object.is_object()) throw WebError(400, "the request is no JSON object");
    const auto found = object.find(key);
    return found == object.end() || found->is_null() ? nullptr : &*found;
}

std::string TextIn(const Json& object, const char* key, const std::string& fallback) {
    const Json* const value = MemberOf(object, key);
    if (!value) return fallback;
    if (value->is_number()) return NumberText(value->get<double>());
    if (value->is_boolean()) return value->get<bool>() ? "1" : "0";
    if (!value->is_string()) Refuse(key, "is no text");
    std::string text = value->get<std::string>();
    if (text.find('\0') != std::string::npos) Refuse(key, "holds a character 0");
    return text;
}

double NumberIn(const Json& object, const char* key, double low, double high, double fallback) {
    const Json* const value = MemberOf(object, key);
    if (!value) return fallback;
    const double number = value->is_number() ? value->get<double>() : NAN;
    if (!(number >= low && number <= high))
        Refuse(key, "is no number from " + NumberText(low) + " to " + NumberText(high));
    return number;
}

int IntegerIn(const Json& object, const char* key, int low, int high, int fallback) {
    return int(std::lround(NumberIn(object, key, low, high, fallback)));
}

bool FlagIn(const Json& object, const char* key) {
    const Json* const value = MemberOf(object, key);
    if (value && !value->is_boolean()) Refuse(key, "is neither true nor false");
    return value && value->get<bool>();
}

const Json& ListIn(const Json& object, const char* key) {
    static const Json none = Json::array();
    const Json* const value = MemberOf(object, key);
    if (value && !value->is_array()) Refuse(key, "is no list");
    return value ? *value : none;
}

}  // namespace Nifikral
