#include "host/pages/html.h"

#include <cctype>

namespace Nifikral {
namespace {

constexpr char pageStyle[] = R"(
:root { color-scheme: light dark; --line: #8886; --quiet: #8882; }
body { margin: 0 auto; padding: 1rem; max-width: 122rem; font: 1rem/1.5 system-ui, sans-serif; }
h1, h2 { line-height: 1.2; overflow-wrap: anywhere; }
h2, p { margin: 0 0 .5rem; }
nav ul { display: flex; flex-wrap: wrap; gap: .25rem 1rem; padding: 0; list-style: none; }
main { display: grid; grid-template-columns: repeat(auto-fill, minmax(min(100%, 32rem), 1fr)); gap: 1.5rem; }
article { padding: 1rem; border: 1px solid var(--line); border-radius: .5rem; min-width: 0; }
figure { margin: 0; }
img { display: block; width: auto; max-width: 100%; height: auto; margin: 0 auto .75rem; }
.board img { background: repeating-conic-gradient(#777 0 25%, #bbb 0 50%) 0 0 / 32px 32px; }
table { display: block; overflow-x: auto; border-collapse: collapse; margin-bottom: .75rem; }
th, td { padding: .1rem .75rem .1rem 0; text-align: left; vertical-align: top; font-weight: normal; }
pre { margin: 0; padding: .5rem; border-radius: .25rem; background: var(--quiet); white-space: pre-wrap; overflow-wrap: anywhere; }
code { font-family: ui-monospace, monospace; }
th, td:nth-child(2) { white-space: nowrap; }
)";

}  // namespace

std::string Link(const std::string& path) {
    constexpr char digits[] = "0123456789ABCDEF";
    std::string escaped;
    for (const char c : path) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 128 && (std::isalnum(byte) || std::string("-._~/").find(c) != std::string::npos))
            escaped += c;
        else
            escaped.append("%").append(1, digits[byte >> 4]).append(1, digits[byte & 15]);
    }
    return escaped;
}

std::string PageHead(const std::string& title, const std::string& style) {
    return "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
           "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<title>" +
           title + "</title>\n<style>" + pageStyle + style + "</style>\n</head>\n<body>\n";
}

}  // namespace Nifikral
