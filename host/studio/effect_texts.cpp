#include "host/studio/effect_texts.h"

#include "host/base/split_text.h"
#include "host/run/request_chain.h"
#include "host/studio/studio_json.h"
#include "host/studio/web_message.h"

namespace Nifikral {
namespace {

// A colon within a value would begin the next parameter.
std::string Escaped(const std::string& text) {
    std::string escaped;
    for (const char letter : text) {
        if (letter == ':') escaped += '\\';
        escaped += letter;
    }
    return escaped;
}

// A key point's colons may stand as they are: what follows them has no "=".
std::string Value(const std::string& text) { return text.find('=') == std::string::npos ? text : Escaped(text); }

void RequireFilesWithin(const std::string& text, const StudioFolder& folder) {
    const RequestParts parts(text);
    for (const auto& [name, value] : parts.pairs) {
        if (name != "inside" && name != "outside") continue;
        const std::string head = Split(value, ',').front();
        if (head != "circle" && head != "ellipse" && head != "rectangle") folder.Existing(value);
    }
}

}  // namespace

std::string EffectText(const Json& request) {
    if (request.is_string()) return request.get<std::string>();
    std::string text = TextIn(request, "name");
    if (text.empty()) throw WebError(400, "a request has no \"name\" of its effect");
    if (const std::string window = TextIn(request, "window"); !window.empty()) text += "@" + window;
    if (const Json* const parameters = MemberOf(request, "parameters")) {
        if (!parameters->is_object()) throw WebError(400, "\"parameters\" is no object");
        for (const auto& [name, value] : parameters->items())
            text += ":" + name + "=" + Value(TextIn(*parameters, name.c_str()));
    }
    for (const std::string& option : regionOptions)
        if (const std::string value = TextIn(request, option.c_str()); !value.empty())
            text += ":" + option + "=" + Value(value);
    return text;
}

std::vector<std::string> EffectTexts(const Json& list, const StudioFolder& folder) {
    constexpr std::size_t mostEffects = 64;
    std::vector<std::string> texts;
    for (const Json& request : list) {
        if (request.is_object() && FlagIn(request, "off")) continue;
        texts.push_back(EffectText(request));
        if (texts.back().empty()) throw WebError(400, "an effect's request is empty");
        RequireFilesWithin(texts.back(), folder);
    }
    if (texts.size() > mostEffects) throw WebError(400, "these are more than 64 effects; leave some out");
    return texts;
}

Json PartsOfChain(const std::vector<std::string>& texts, const EffectModule& module) {
    Json list = Json::array();
    for (const EffectRequest& request : ParseEffectRequests(texts, module, {})) {
        RequestParts parts(request.text);
        Json parameters = Json::object(), entry = {{"name", request.effect}};
        for (const auto& [name, value] : parts.pairs) {
            const bool isRegion = std::find(regionOptions.begin(), regionOptions.end(), name) != regionOptions.end();
            (isRegion ? entry : parameters)[name] = value;
        }
        if (request.window) entry["window"] = request.window->Text();
        entry["parameters"] = std::move(parameters);
        list.push_back(std::move(entry));
    }
    return {{"requests", std::move(list)}};
}

}  // namespace Nifikral
