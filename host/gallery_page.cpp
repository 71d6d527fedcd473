#include "host/gallery_page.h"

#include <cctype>
#include <sstream>

namespace Nifikral {
namespace {

constexpr char style[] = R"(
:root { color-scheme: light dark; --line: #8886; --quiet: #8882; }
body { margin: 0 auto; padding: 1rem; max-width: 122rem; font: 1rem/1.5 system-ui, sans-serif; }
h1, h2 { line-height: 1.2; overflow-wrap: anywhere; }
h2, p { margin: 0 0 .5rem; }
nav ul { display: flex; flex-wrap: wrap; gap: .25rem 1rem; padding: 0; list-style: none; }
main { display: grid; grid-template-columns: repeat(auto-fill, minmax(min(100%, 32rem), 1fr)); gap: 1.5rem; }
article { padding: 1rem; border: 1px solid var(--line); border-radius: .5rem; min-width: 0; }
figure { margin: 0; }
img { display: block; width: auto; max-width: 100%; height: auto; margin: 0 auto .75rem; }
table { display: block; overflow-x: auto; border-collapse: collapse; margin-bottom: .75rem; }
th, td { padding: .1rem .75rem .1rem 0; text-align: left; vertical-align: top; font-weight: normal; }
pre { margin: 0; padding: .5rem; border-radius: .25rem; background: var(--quiet); white-space: pre-wrap; overflow-wrap: anywhere; }
code { font-family: ui-monospace, monospace; }
th, td:nth-child(2) { white-space: nowrap; }
)";

std::string Html(const std::string& text) {
    std::string escaped;
    for (const char c : text) {
        switch (c) {
            case '&':
                escaped += "&amp;";
                break;
            case '<':
                escaped += "&lt;";
                break;
            case '>':
                escaped += "&gt;";
                break;
            case '"':
                escaped += "&quot;";
                break;
            default:
                escaped += c;
        }
    }
    return escaped;
}

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

class Page {
 public:
    explicit Page(const GalleryPage& page) : m_page(page) {}

    std::string Render() {
        const std::string title = Html(m_page.photographName) + " under every effect";
        m_out << "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
              << "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
              << "<title>" << title << "</title>\n<style>" << style << "</style>\n</head>\n<body>\n<header>\n"
              << "<h1>" << title << "</h1>\n<p>The photograph as it is, at " << m_page.width << " by " << m_page.height
              << " pixels; below it the same photograph under each of " << m_page.pictures.size()
              << " effects. The command below a picture makes exactly that picture when it runs in this page's "
                 "folder.</p>\n<figure>\n";
        Image(m_page.photographFile, "the photograph as it is", false);
        m_out << "</figure>\n<nav aria-label=\"Effects\">\n<ul>\n";
        for (const GalleryPicture& picture : m_page.pictures)
            m_out << "<li><a href=\"#" << Link(picture.effect) << "\">" << Html(picture.effect) << "</a></li>\n";
        m_out << "</ul>\n</nav>\n</header>\n<main>\n";
        for (const GalleryPicture& picture : m_page.pictures) Article(picture);
        m_out << "</main>\n</body>\n</html>\n";
        return m_out.str();
    }

 private:
    void Image(const std::string& file, const std::string& description, bool lazy) {
        m_out << "<a href=\"" << Link(file) << "\"><img src=\"" << Link(file) << "\" alt=\"" << Html(description)
              << "\" width=\"" << m_page.width << "\" height=\"" << m_page.height << "\""
              << (lazy ? " loading=\"lazy\"" : "") << "></a>\n";
    }

    void Article(const GalleryPicture& picture) {
        m_out << "<article id=\"" << Html(picture.effect) << "\">\n<h2>" << Html(picture.effect) << "</h2>\n<p>"
              << Html(picture.summary)
              << (picture.times > 1 ? ", here " + std::to_string(picture.times) + " times" : "")
              << (picture.overBlack ? ", here over black" : "") << "</p>\n";
        Image(picture.file, "the photograph under " + picture.effect + ": " + picture.summary, true);
        if (picture.parameters.empty())
            m_out << "<p>It has no parameters.</p>\n";
        else
            m_out << "<table>\n";
        for (const GalleryParameter& parameter : picture.parameters) {
            m_out << "<tr><th scope=\"row\"><code>" << Html(parameter.name) << "</code></th><td><code>"
                  << Html(parameter.value) << "</code></td><td>" << Html(parameter.meaning);
            if (!parameter.unit.empty()) m_out << " (" << Html(parameter.unit) << ")";
            m_out << "</td></tr>\n";
        }
        if (!picture.parameters.empty()) m_out << "</table>\n";
        m_out << "<pre><code>" << Html(picture.command) << "</code></pre>\n</article>\n";
    }

    const GalleryPage& m_page;
    std::ostringstream m_out;
};

}  // namespace

std::string RenderGallery(const GalleryPage& page) { return Page(page).Render(); }

}  // namespace Nifikral
