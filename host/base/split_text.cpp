#include "host/base/split_text.h"

namespace Nifikral {

std::vector<std::string> Split(const std::string& text, char separator) {
    std::vector<std::string> parts(1);
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\\' && i + 1 < text.size() && text[i + 1] == separator)
            parts.back() += text[++i];
        else if (text[i] == separator)
            parts.emplace_back();
        else
            parts.back() += text[i];
    }
    return parts;
}

}  // namespace Nifikral
