#include "host/base/shell_word.h"

namespace Nifikral {

std::string ShellWord(const std::string& text) {
    constexpr char harmless[] =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789"
        "_-./:=,%@+";
    if (!text.empty() && text.find_first_not_of(harmless) == std::string::npos) return text;
    std::string quoted = "'";
    for (const char c : text) quoted += c == '\'' ? "'\\''" : std::string(1, c);
    return quoted + "'";
}

}  // namespace Nifikral
