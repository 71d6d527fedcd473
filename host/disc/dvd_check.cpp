#include "host/disc/dvd_check.h"

#include <dvdread/dvd_reader.h>
#include <dvdread/ifo_read.h>
#include <dvdread/nav_read.h>

#include <array>
#include <cmath>
#include <cstdarg>
#include <memory>

#include "host/base/errors.h"

namespace Nifikral {
namespace {

struct CloseDisc {
    void operator()(dvd_reader_t* disc) const { DVDClose(disc); }
    void operator()(dvd_file_t* file) const { DVDCloseFile(file); }
    void operator()(ifo_handle_t* table) const { ifoClose(table); }
};
using DiscPtr = std::unique_ptr<dvd_reader_t, CloseDisc>;
using DiscFilePtr = std::unique_ptr<dvd_file_t, CloseDisc>;
using TablePtr = std::unique_ptr<ifo_handle_t, CloseDisc>;

void DropMessage(void*, dvd_logger_level_t, const char*, va_list) {}

double SecondsOf(const dvd_time_t& time) {
    const auto digits = [](unsigned byte) { return double(byte >> 4) * 10 + double(byte & 15); };
    const unsigned rate = time.frame_u >> 6;
    return digits(time.hour) * 3600 + digits(time.minute) * 60 + digits(time.second) +
           digits(time.frame_u & 0x3F) / (rate == 3 ? 30.0 : 25.0);
}

std::string LanguageOf(std::uint16_t code) {
    if (code == 0 || code == 0xFFFF) return {};
    return {char(code >> 8), char(code & 0xFF)};
}

class Checker {
 public:
    Checker(const std::string& disc, const std::vector<DiscPage>& pages, const std::vector<MadeTitle>& titles)
        : m_name(disc), m_pages(pages), m_titles(titles) {
        static const dvd_logger_cb silent{DropMessage};
        m_disc.reset(DVDOpen2(nullptr, &silent, disc.c_str()));
        if (!m_disc) Fail("cannot be read back");
    }

    void Check() {
        const TablePtr main = Table(0);
        if (!main->tt_srpt || main->tt_srpt->nr_of_srpts != m_titles.size())
            Fail("has " + std::to_string(main->tt_srpt ? main->tt_srpt->nr_of_srpts : 0) + " titles instead of " +
                 std::to_string(m_titles.size()));
        CheckMenus(*main, 0, -1);
        for (std::size_t i = 0; i < m_titles.size(); ++i) {
            const TablePtr table = Table(int(i) + 1);
            CheckTitle(*table, i);
            CheckMenus(*table, int(i) + 1, int(i));
        }
    }

 private:
    [[noreturn]] void Fail(const std::string& what) const {
        throw HostError(ExitCode::Failed,
                        m_name + ": the disc that dvdauthor wrote " + what + "; -v shows what the programs printed");
    }

    TablePtr Table(int titleSet) const {
        TablePtr table(ifoOpen(m_disc.get(), titleSet));
        if (!table) Fail("has no readable title set " + std::to_string(titleSet));
        return table;
    }

    void Compare(const std::string& what, std::size_t count, std::size_t wanted) const {
        if (count != wanted) Fail("has " + std::to_string(count) + what + " instead of " + std::to_string(wanted));
    }

    void CheckTitle(const ifo_handle_t& table, std::size_t number) const {
        const MadeTitle& title = m_titles[number];
        const std::string of = " of title " + std::to_string(number + 1);
        const vtsi_mat_t& facts = *table.vtsi_mat;
        Compare(" sound tracks" + of, facts.nr_of_vts_audio_streams, title.audioLanguages.size());
        Compare(" subtitle tracks" + of, facts.nr_of_vts_subp_streams, title.subtitleLanguages.size());
        for (std::size_t i = 0; i < title.audioLanguages.size(); ++i)
            CheckLanguage(LanguageOf(facts.vts_audio_attr[i].lang_code), title.audioLanguages[i], of);
        for (std::size_t i = 0; i < title.subtitleLanguages.size(); ++i)
            CheckLanguage(LanguageOf(facts.vts_subp_attr[i].lang_code), title.subtitleLanguages[i], of);
        Compare(" chapters" + of, table.vts_ptt_srpt->title[0].nr_of_ptts,
                std::max<std::size_t>(1, title.chapters.size()));
        const double seconds = SecondsOf(table.vts_pgcit->pgci_srp[0].pgc->playback_time);
        // A player's clock counts 30 frames a second where a second has 29.97 of them.
        if (std::abs(seconds - title.seconds) > 2 + title.seconds * 0.002)
            Fail("plays" + of + " for " + std::to_string(std::lround(seconds)) + " seconds instead of " +
                 std::to_string(std::lround(title.seconds)));
    }

    void CheckLanguage(const std::string& language, const std::string& wanted, const std::string& of) const {
        if (language != DvdLanguage(wanted))
            Fail("has the language \"" + language + "\"" + of + " instead of \"" + wanted + "\"");
    }

    // Menu 1 of each is no page; the pages follow in order.
    void CheckMenus(const ifo_handle_t& table, int titleSet, int film) const {
        const std::vector<std::size_t> own = PagesOfFilm(m_pages, film);
        if (own.empty()) return;
        if (!table.pgci_ut || table.pgci_ut->nr_of_lus < 1 || table.pgci_ut->lu[0].pgcit->nr_of_pgci_srp <= own.size())
            Fail("lacks menus of title set " + std::to_string(titleSet));
        const DiscFilePtr film_(DVDOpenFile(m_disc.get(), titleSet, DVD_READ_MENU_VOBS));
        if (!film_) Fail("lacks the menu film of title set " + std::to_string(titleSet));
        for (std::size_t i = 0; i < own.size(); ++i) {
            const pgc_t& menu = *table.pgci_ut->lu[0].pgcit->pgci_srp[i + 1].pgc;
            const DiscPage& page = m_pages[own[i]];
            if (menu.nr_of_cells < 1) Fail("has an empty menu " + page.name);
            Compare(" buttons on the menu " + page.name,
                    ButtonsAt(*film_, menu.cell_playback[menu.nr_of_cells - 1].last_vobu_start_sector, page),
                    page.buttons.size());
        }
    }

    std::size_t ButtonsAt(dvd_file_t& film, std::uint32_t sector, const DiscPage& page) const {
        std::array<std::uint8_t, DVD_VIDEO_LB_LEN> bytes{};
        if (DVDReadBlocks(&film, int(sector), 1, bytes.data()) != 1) Fail("has an unreadable menu " + page.name);
        pci_t facts;
        navRead_PCI(&facts, bytes.data() + 0x2D);
        return facts.hli.hl_gi.hli_ss == 0 ? 0 : facts.hli.hl_gi.btn_ns;
    }

    const std::string& m_name;
    const std::vector<DiscPage>& m_pages;
    const std::vector<MadeTitle>& m_titles;
    DiscPtr m_disc;
};

}  // namespace

void CheckDvd(const std::string& disc, const std::vector<DiscPage>& pages, const std::vector<MadeTitle>& titles) {
    Checker(disc, pages, titles).Check();
}

}  // namespace Nifikral
