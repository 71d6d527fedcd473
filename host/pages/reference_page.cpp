#include "host/pages/reference_page.h"

#include <algorithm>
#include <sstream>

#include "host/base/markup.h"
#include "host/base/version.h"
#include "host/catalogue/effect_json.h"
#include "host/films/menu_project.h"
#include "host/media/ffmpeg_handles.h"
#include "host/pages/html.h"
#include "host/run/effect_request.h"

extern "C" {
#include <libavutil/base64.h>
}

namespace Nifikral {
namespace {

// The photograph is in the page once, as the background of every picture "before".
constexpr char style[] = R"(
main { display: block; max-width: 72rem; margin: 0 auto; }
header { max-width: 72rem; margin: 0 auto; }
section > h2 { margin: 2.5rem 0 1rem; font-size: 1.6rem; }
article { margin-bottom: 1.5rem; }
h3 { margin: 0; font-size: 1.2rem; }
.pair > * { display: inline-block; width: 480px; max-width: 100%; margin: 0 .5rem .5rem 0; vertical-align: top; }
.pair > .moment { width: 192px; }
.before { background-size: cover; }
.before::before { content: ""; display: block; }
thead th { border-bottom: 1px solid var(--line); }
tbody tr:nth-child(even) { background: var(--quiet); }
th, td { padding: .2rem .75rem .2rem .25rem; }
td:nth-child(2), td:nth-child(3) { white-space: nowrap; }
td:nth-child(2) { max-width: 18rem; white-space: normal; }
th small { display: block; opacity: .7; }
details { margin-bottom: 1rem; }
)";

std::string DataLink(const std::string& picture) {
    std::string text(AV_BASE64_SIZE(picture.size()), '\0');
    av_base64_encode(text.data(), int(text.size()), reinterpret_cast<const std::uint8_t*>(picture.data()),
                     int(picture.size()));
    text.resize(text.find('\0'));
    return (picture.starts_with("RIFF") ? "data:image/webp;base64," : "data:image/jpeg;base64,") + text;
}

class Page {
 public:
    explicit Page(const ReferencePage& page) : m_page(page) {
        for (const ReferenceEntry& entry : page.entries)
            if (const std::string category = entry.effect.info.category;
                std::find(m_categories.begin(), m_categories.end(), category) == m_categories.end())
                m_categories.push_back(category);
    }

    std::string Render() {
        const std::string title = "The effects of Nifikral " + std::string(Version());
        std::ostringstream own;
        own << style << ".before { background-image: url(" << DataLink(m_page.photograph)
            << "); }\n.before::before { padding-top: " << 100.0 * m_page.height / m_page.width << "%; }\n";
        m_out
            << PageHead(title, own.str()) << "<header>\n<h1>" << title
            << "</h1>\n<p>Every effect with the photograph before and after it, or a frame of what the generator makes "
               "of its example, and with all of its parameters. A parameter may be named without the effect's own "
               "prefix, as in the commands below the pictures. Outside its range a value is remarked on. Every effect "
               "also has the parameter <code>duration</code>: "
            << Markup(FindParameter("", "duration")->meaning) << ".</p>\n<nav aria-label=\"Effects\">\n";
        for (const std::string& category : m_categories) {
            m_out << "<p><strong>" << Markup(category) << "</strong></p>\n<ul>\n";
            ForEachOf(category, [&](const ReferenceEntry& entry) {
                const std::string name = Markup(entry.effect.name);
                m_out << "<li><a href=\"#" << name << "\">" << name << "</a></li>\n";
            });
            m_out << "</ul>\n";
        }
        m_out << "</nav>\n</header>\n<main>\n";
        for (const std::string& category : m_categories) Section(category);
        m_out
            << "<section>\n<h2>For programs</h2>\n<p>All of this as JSON: <code>nifikral list --json</code>. Its "
               "schema, "
               "from <code>nifikral generate schema</code>:</p>\n<details>\n<summary>JSON schema</summary>\n<pre><code>"
            << Markup(effectsSchema) << "</code></pre>\n</details>\n</section>\n</main>\n</body>\n</html>\n";
        return m_out.str();
    }

 private:
    template <class Use>
    void ForEachOf(const std::string& category, Use use) const {
        for (const ReferenceEntry& entry : m_page.entries)
            if (entry.effect.info.category == category) use(entry);
    }

    void Section(const std::string& category) {
        m_out << "<section>\n<h2>" << Markup(category) << "</h2>\n";
        bool menusShown = false;
        ForEachOf(category, [&](const ReferenceEntry& entry) {
            // All menus have the same parameters, so these are printed once for all.
            const bool isMenu = (entry.effect.info.traits & menu) != 0;
            if (isMenu && !menusShown) {
                m_out << "<article>\n<h3>What all menus take</h3>\n<p>The keys of a project file, which is JSON:</p>\n"
                      << "<pre><code>" << Markup(DescribeProjectKeys()) << "</code></pre>\n"
                      << "<p>The properties that a host sets; lists are joined by \";\", texts by \"\\\":</p>\n";
                Parameters(entry.effect);
                m_out << "</article>\n";
                menusShown = true;
            }
            Article(entry, !isMenu);
        });
        m_out << "</section>\n";
    }

    void Article(const ReferenceEntry& entry, bool withParameters) {
        const EffectDetails& effect = entry.effect;
        const std::string name = Markup(effect.name), summary = Markup(effect.info.summary);
        m_out << "<article id=\"" << name << "\">\n<h3>" << name << "</h3>\n<p>" << summary;
        if (entry.times > 1) m_out << ", here " << entry.times << " times";
        const bool moments = entry.pictures.size() > 1, translucent = (effect.info.traits & changesAlpha) != 0;
        if (moments) m_out << ", here at three moments";
        if (translucent) m_out << ", over a chequered board";
        m_out << "</p>\n<div class=\"pair" << (translucent ? " board" : "") << "\">\n";
        const bool before = !(effect.info.traits & generator);
        if (before) m_out << "<div class=\"before\" role=\"img\" aria-label=\"the photograph before\"></div>\n";
        for (const std::string& picture : entry.pictures)
            m_out << "<img src=\"" << DataLink(picture) << "\"" << (moments ? " class=\"moment\"" : "") << " alt=\""
                  << (before ? "the photograph under " + name : "a frame of " + name) << ": " << summary << "\">\n";
        m_out << "</div>\n";
        if (withParameters) Parameters(effect);
        m_out << "<pre><code>" << Markup(entry.command) << "</code></pre>\n</article>\n";
    }

    void Parameters(const EffectDetails& effect) {
        if (effect.parameters.size() < 2) {
            m_out << "<p>It has no parameters.</p>\n";
            return;
        }
        m_out << "<table>\n<thead><tr><th scope=\"col\">parameter</th><th scope=\"col\">values</th>"
                 "<th scope=\"col\">type and default</th><th scope=\"col\">meaning</th></tr></thead>\n<tbody>\n";
        for (const ParameterDetails& parameter : effect.parameters) {
            const std::string& name = parameter.property.name;
            if (name == "duration") continue;
            const std::string brief = ShortName(effect.name, name);
            m_out << "<tr><th scope=\"row\"><code>" << Markup(brief) << "</code>";
            if (brief != name) m_out << "<small><code>" << Markup(name) << "</code></small>";
            m_out << "</th><td>" << Markup(ValuesText(parameter.info)) << "</td><td>"
                  << Markup(TypeAndDefault(parameter)) << "</td><td>" << Markup(parameter.info.meaning)
                  << "</td></tr>\n";
        }
        m_out << "</tbody>\n</table>\n";
    }

    const ReferencePage& m_page;
    std::vector<std::string> m_categories;
    std::ostringstream m_out;
};

}  // namespace

std::string RenderReference(const ReferencePage& page) { return Page(page).Render(); }

}  // namespace Nifikral
