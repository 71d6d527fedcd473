#include "host/disc/dvd_script.h"

#include <algorithm>
#include <sstream>

#include "host/base/errors.h"
#include "host/base/language_code.h"
#include "host/base/markup.h"

namespace Nifikral {
namespace {

// What the registers of a player hold. It keeps 16 bits in each, and a button's number times 1024.
//   g0  1: all films are played in turn, until another button is pressed or the last one ends
//   g1  the film that follows then, from 1
//   g2  the button to be chosen on the page of the disc's menu in g3
//   g3  a page of the disc's menu, from 1; 0: none
//   g4  a page of a film's menu, from 1; 0: the one that shows where the film is
//   g5  1: the button of the chapter that the player is in is to be chosen
//   s7  the chapter that the player is in
constexpr int buttonUnit = 1024, dispatched = 30;
constexpr std::size_t mostMenus = 99;

// Of films, each of which is left by a menu of its own.
std::size_t GroupsOf(std::size_t films) { return (films + dispatched - 1) / dispatched; }

std::string Number(long long number) { return std::to_string(number); }

std::string Set(const char* variable, long long value) { return std::string(variable) + " = " + Number(value) + "; "; }

class Script {
 public:
    Script(const DiscProject& project, const std::vector<DiscPage>& pages, const std::vector<MadeTitle>& titles,
           const std::vector<MadePage>& films, const DvdFiles& files)
        : m_pages(pages), m_titles(titles), m_films(films), m_files(files) {
        const FilmProfile& profile = *project.profile;
        m_wide = av_cmp_q(profile.shownAspect, AVRational{3, 2}) > 0;
        m_format = profile.height == 576 ? "pal" : "ntsc";
        m_discPages = PagesOfFilm(pages, -1);
    }

    std::string Text() {
        m_text << "<dvdauthor format=\"" << m_format << "\">\n<vmgm>\n<fpc>" << Set("g0", 0) << Set("g3", 0)
               << Set("g4", 0) << Set("g5", 0) << "jump vmgm menu 1;</fpc>\n";
        WriteDiscMenus();
        m_text << "</vmgm>\n";
        for (std::size_t film = 0; film < m_titles.size(); ++film) WriteTitleSet(film);
        m_text << "</dvdauthor>\n";
        return m_text.str();
    }

 private:
    // Menu 1 chooses the page, the pages follow, and behind them what goes on when all films are played.
    void WriteDiscMenus() {
        const std::size_t groups = GroupsOf(m_titles.size());
        m_text << "<menus>\n";
        WriteMenuAttributes();
        m_text << "<pgc entry=\"title\"><pre>";
        for (std::size_t i = 1; i < m_discPages.size(); ++i)
            m_text << "if (g3 eq " << i + 1 << ") jump menu " << i + 2 << "; ";
        m_text << "jump menu 2;</pre></pgc>\n";
        for (std::size_t i = 0; i < m_discPages.size(); ++i) {
            const long long number = static_cast<long long>(i) + 1;
            WritePage(m_discPages[i],
                      Set("button", buttonUnit) + "if (g3 eq " + Number(number) + ") button = g2; " + Set("g3", 0));
        }
        for (std::size_t group = 0; group < groups; ++group) {
            m_text << "<pgc><pre>";
            for (std::size_t film = group * dispatched; film < std::min(m_titles.size(), (group + 1) * dispatched);
                 ++film)
                m_text << "if (g1 eq " << film + 1 << ") jump title " << film + 1 << "; ";
            m_text << "jump menu 1;</pre></pgc>\n";
        }
        m_text << "</menus>\n";
    }

    void WriteTitleSet(std::size_t film) {
        const MadeTitle& title = m_titles[film];
        m_text << "<titleset>\n<menus>\n";
        const std::vector<std::size_t> own = PagesOfFilm(m_pages, int(film));
        WriteMenuAttributes();
        WriteRoot(int(film), own);
        for (const std::size_t page : own) WritePage(page, ChapterPageBegin(int(film), m_pages[page]));
        m_text << "</menus>\n<titles>\n";
        WriteVideo();
        for (const std::string& language : title.audioLanguages) m_text << "<audio" << Language(language) << "/>\n";
        for (std::size_t i = 0; i < title.subtitleLanguages.size(); ++i)
            WriteSubtitle(Language(title.subtitleLanguages[i]), i, i);
        m_text << "<pgc"
               << (title.subtitleLanguages.empty() ? "" : " palette=\"" + Markup(m_files.palettes[film]) + "\"")
               << "><pre>" << ChooseFilm(int(film)) << "</pre><vob file=\"" << Markup(title.path) << "\" chapters=\"";
        for (std::size_t i = 0; i < title.chapters.size(); ++i) m_text << &","[i == 0] << Seconds(title.chapters[i]);
        m_text << (title.chapters.empty() ? "0" : "") << "\"/><post>" << AfterFilm(int(film)) << "</post></pgc>\n"
               << "</titles>\n</titleset>\n";
    }

    // What the Menu key reaches: the chapters, or the disc's menu where a film has none.
    void WriteRoot(int film, const std::vector<std::size_t>& own) {
        m_text << "<pgc entry=\"root ptt\"><pre>";
        if (own.empty()) {
            m_text << ChooseFilm(film) << "jump vmgm menu entry title;</pre></pgc>\n";
            return;
        }
        for (std::size_t i = 0; i < own.size(); ++i) m_text << "if (g4 eq " << i + 1 << ") jump menu " << i + 2 << "; ";
        m_text << Set("g5", 1);
        for (std::size_t i = own.size(); i-- > 1;)
            m_text << "if (s7 gt " << FirstChapter(m_pages[own[i]]) << ") jump menu " << i + 2 << "; ";
        m_text << "jump menu 2;</pre></pgc>\n";
    }

    static int FirstChapter(const DiscPage& page) {
        int first = 0;
        bool found = false;
        for (const DiscButton& button : page.buttons)
            if (button.target.kind == DiscTarget::Kind::Chapter && (!found || button.target.chapter < first)) {
                first = button.target.chapter;
                found = true;
            }
        return first;
    }

    std::string ChapterPageBegin(int film, const DiscPage& page) const {
        std::string commands = Set("g4", 0) + ChooseFilm(film) + Set("button", buttonUnit) + "if (g5 eq 1) {";
        for (std::size_t i = 0; i < page.buttons.size(); ++i)
            if (page.buttons[i].target.kind == DiscTarget::Kind::Chapter)
                commands += " if (s7 eq " + Number(page.buttons[i].target.chapter + 1) + ") " +
                            Set("button", buttonUnit * (static_cast<long long>(i) + 1));
        return commands + "} " + Set("g5", 0);
    }

    std::string ChooseFilm(int film) const {
        const ButtonPlace place = PlaceOfFilm(m_pages, film);
        const auto page = std::find(m_discPages.begin(), m_discPages.end(), std::size_t(place.page));
        return Set("g3", page - m_discPages.begin() + 1) + Set("g2", buttonUnit * (place.button + 1LL));
    }

    std::string AfterFilm(int film) const {
        const int count = int(m_titles.size()), next = (film + 1) % count;
        std::string commands = ChooseFilm(next);
        if (next == 0)
            commands += Set("g0", 0);
        else
            commands += Set("g1", next + 1) + "if (g0 eq 1) call vmgm menu " +
                        Number(static_cast<long long>(m_discPages.size()) + 2 + next / dispatched) + "; ";
        return commands + "call vmgm menu 1;";
    }

    std::string Command(const DiscPage& page, const DiscTarget& target) const {
        const std::string film = Number(target.film + 1);
        switch (target.kind) {
            case DiscTarget::Kind::Film:
                return Set("g0", 0) + (page.film < 0 ? "jump title " + film + ";" : "jump title 1;");
            case DiscTarget::Kind::PlayAll:
                return Set("g0", 1) + "jump title 1;";
            case DiscTarget::Kind::Chapter:
                return Set("g0", 0) + "jump title 1 chapter " + Number(target.chapter + 1) + ";";
            case DiscTarget::Kind::Page:
                break;
        }
        const int other = m_pages[std::size_t(target.page)].film;
        const std::vector<std::size_t> pages = PagesOfFilm(m_pages, other);
        const long long place = std::find(pages.begin(), pages.end(), std::size_t(target.page)) - pages.begin();
        if (other == page.film) return "jump menu " + Number(place + 2) + ";";
        if (other < 0) return "jump vmgm menu " + Number(place + 2) + ";";
        return Set("g4", place + 1) + "jump titleset " + Number(other + 1) + " menu entry root;";
    }

    void WritePage(std::size_t number, const std::string& begin) {
        const DiscPage& page = m_pages[number];
        const double loopStart = m_films[number].loopStart;
        m_text << "<pgc><pre>" << begin << "</pre><vob file=\"" << Markup(m_files.pages[number]) << "\">";
        if (loopStart > 0) m_text << "<cell start=\"0\" end=\"" << Seconds(loopStart) << "\"/>";
        m_text << "<cell start=\"" << Seconds(loopStart) << "\" end=\"-1\"/></vob>\n";
        for (std::size_t i = 0; i < page.buttons.size(); ++i)
            m_text << "<button name=\"b" << i + 1 << "\">" << Command(page, page.buttons[i].target) << "</button>\n";
        m_text << "<post>jump cell " << (loopStart > 0 ? 2 : 1) << ";</post></pgc>\n";
    }

    void WriteVideo() {
        m_text << "<video format=\"" << m_format << "\" aspect=\"" << (m_wide ? "16:9\" widescreen=\"nopanscan" : "4:3")
               << "\"/>\n";
    }

    void WriteMenuAttributes() {
        WriteVideo();
        WriteSubtitle("", 0, 1);
    }

    // The stream for each way of showing the picture.
    void WriteSubtitle(const std::string& attributes, std::size_t whole, std::size_t letterboxed) {
        m_text << "<subpicture" << attributes << ">";
        if (m_wide)
            m_text << "<stream id=\"" << whole << "\" mode=\"widescreen\"/><stream id=\"" << letterboxed
                   << "\" mode=\"letterbox\"/>";
        else
            m_text << "<stream id=\"" << whole << "\" mode=\"normal\"/>";
        m_text << "</subpicture>\n";
    }

    static std::string Language(const std::string& language) {
        const std::string known = DvdLanguage(language);
        return known.empty() ? "" : " lang=\"" + known + "\"";
    }

    // dvdauthor takes the first picture at a time or after it.
    static std::string Seconds(double seconds) {
        std::ostringstream text;
        text.precision(3);
        text << std::fixed << seconds;
        return text.str();
    }

    const std::vector<DiscPage>& m_pages;
    const std::vector<MadeTitle>& m_titles;
    const std::vector<MadePage>& m_films;
    const DvdFiles& m_files;
    std::vector<std::size_t> m_discPages;
    bool m_wide = false;
    std::string m_format;
    std::ostringstream m_text;
};

}  // namespace

std::string DvdLanguage(const std::string& language) {
    const std::string code = LanguageCode(language);
    return code == "he" ? "iw" : code == "id" ? "in" : code == "yi" ? "ji" : code;
}

ButtonPlace PlaceOfFilm(const std::vector<DiscPage>& pages, int film) {
    for (std::size_t page = 0; page < pages.size(); ++page)
        for (std::size_t button = 0; button < pages[page].buttons.size(); ++button)
            if (pages[page].film < 0 && pages[page].buttons[button].target == DiscTarget{DiscTarget::Kind::Film, film})
                return {int(page), int(button)};
    return {};
}

std::vector<std::size_t> PagesOfFilm(const std::vector<DiscPage>& pages, int film) {
    std::vector<std::size_t> own;
    for (std::size_t i = 0; i < pages.size(); ++i)
        if (pages[i].film == film) own.push_back(i);
    return own;
}

void CheckMenuCounts(const DiscProject& project, const std::vector<DiscPage>& pages, Faults& faults) {
    const auto check = [&](const std::string& item, std::size_t count) {
        if (count > mostMenus)
            faults.Add(item, "need " + std::to_string(count) + " menus, and a DVD holds " + std::to_string(mostMenus) +
                                 " there; choose a template with more pictures on a page, or leave some out");
    };
    check("films", PagesOfFilm(pages, -1).size() + GroupsOf(project.films.size()) + 1);
    for (std::size_t i = 0; i < project.films.size(); ++i)
        check(project.films[i].item + ".chapters", PagesOfFilm(pages, int(i)).size() + 1);
}

std::string DvdScript(const DiscProject& project, const std::vector<DiscPage>& pages,
                      const std::vector<MadeTitle>& titles, const std::vector<MadePage>& films, const DvdFiles& files) {
    return Script(project, pages, titles, films, files).Text();
}

}  // namespace Nifikral
