#include "host/pages/gallery_page.h"

#include <sstream>

#include "host/base/markup.h"
#include "host/pages/html.h"

namespace Nifikral {
namespace {

// What moves stands beside what stands still.
constexpr char style[] = R"(
.shown { display: flex; flex-wrap: wrap; gap: .5rem; margin-bottom: .75rem; }
.shown > * { flex: 1 1 14rem; min-width: 0; }
.moments > a { flex-basis: 9rem; }
.shown > video { max-width: min(100%, 480px); }
.shown img, .shown video { width: 100%; height: auto; margin: 0; }
)";

class Page {
 public:
    explicit Page(const GalleryPage& page) : m_page(page) {}

    std::string Render() {
        const std::string title = Markup(m_page.photographName) + " under every effect";
        m_out << PageHead(title, style) << "<header>\n"
              << "<h1>" << title << "</h1>\n<p>The photograph as it is, at " << m_page.width << " by " << m_page.height
              << " pixels; below it the same photograph under each of " << m_page.pictures.size()
              << " effects. The command below a picture makes exactly that picture when it runs in this page's "
                 "folder; effects that move have a short film beside it, which has a command too.</p>\n<figure>\n";
        Image(m_page.photographFile, "the photograph as it is", false);
        m_out << "</figure>\n<nav aria-label=\"Effects\">\n<ul>\n";
        for (const GalleryPicture& picture : m_page.pictures)
            m_out << "<li><a href=\"#" << Link(picture.effect) << "\">" << Markup(picture.effect) << "</a></li>\n";
        m_out << "</ul>\n</nav>\n</header>\n<main>\n";
        for (const GalleryPicture& picture : m_page.pictures) Article(picture);
        m_out << "</main>\n</body>\n</html>\n";
        return m_out.str();
    }

 private:
    void Image(const std::string& file, const std::string& description, bool lazy) {
        m_out << "<a href=\"" << Link(file) << "\"><img src=\"" << Link(file) << "\" alt=\"" << Markup(description)
              << "\" width=\"" << m_page.width << "\" height=\"" << m_page.height << "\""
              << (lazy ? " loading=\"lazy\"" : "") << "></a>\n";
    }

    void Article(const GalleryPicture& picture) {
        const bool moments = picture.stills.size() > 1;
        m_out << "<article id=\"" << Markup(picture.effect) << "\">\n<h2>" << Markup(picture.effect) << "</h2>\n<p>"
              << Markup(picture.summary)
              << (picture.times > 1 ? ", here " + std::to_string(picture.times) + " times" : "")
              << (moments ? ", here at three moments" : "") << (picture.translucent ? ", over a chequered board" : "")
              << "</p>\n";
        const std::string description = "the photograph under " + picture.effect + ": " + picture.summary;
        m_out << "<div class=\"shown" << (moments ? " moments" : "") << (picture.translucent ? " board" : "")
              << "\">\n";
        for (const std::string& still : picture.stills) Image(still, description, true);
        if (!picture.film.empty())
            m_out << "<video src=\"" << Link(picture.film) << "\" aria-label=\"" << Markup(description)
                  << ", moving\" autoplay loop muted playsinline controls></video>\n";
        m_out << "</div>\n";
        if (picture.parameters.empty())
            m_out << "<p>It has no parameters.</p>\n";
        else
            m_out << "<table>\n";
        for (const GalleryParameter& parameter : picture.parameters) {
            m_out << "<tr><th scope=\"row\"><code>" << Markup(parameter.name) << "</code></th><td><code>"
                  << Markup(parameter.value) << "</code></td><td>" << Markup(parameter.meaning);
            if (!parameter.unit.empty()) m_out << " (" << Markup(parameter.unit) << ")";
            m_out << "</td></tr>\n";
        }
        if (!picture.parameters.empty()) m_out << "</table>\n";
        m_out << "<pre><code>" << Markup(picture.commands) << "</code></pre>\n</article>\n";
    }

    const GalleryPage& m_page;
    std::ostringstream m_out;
};

}  // namespace

std::string RenderGallery(const GalleryPage& page) { return Page(page).Render(); }

}  // namespace Nifikral
