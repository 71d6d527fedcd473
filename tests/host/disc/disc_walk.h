#pragma once

#include <dvdnav/dvdnav.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdarg>
#include <functional>
#include <memory>
#include <ostream>
#include <set>
#include <string>

namespace Nifikral {

/// Where a player is: in a title, or in a menu of the disc (title set 0) or of a title set.
struct DiscPlace {
    bool menu = false;
    int titleSet = 0, page = 0;  // of a menu
    int title = 0, chapter = 0;  // of a film
    bool operator==(const DiscPlace&) const = default;
};

inline DiscPlace MenuPlace(int titleSet, int page) { return {true, titleSet, page, 0, 0}; }
inline DiscPlace FilmPlace(int title, int chapter) { return {false, 0, 0, title, chapter}; }

inline std::ostream& operator<<(std::ostream& to, const DiscPlace& place) {
    if (place.menu) return to << "page " << place.page << " of title set " << place.titleSet;
    return to << "title " << place.title << " chapter " << place.chapter;
}

/// A player of discs without a screen.
class DiscWalk {
 public:
    explicit DiscWalk(const std::string& disc) {
        static const dvdnav_logger_cb silent{[](void*, dvdnav_logger_level_t, const char*, va_list) {}};
        dvdnav_t* player = nullptr;
        if (dvdnav_open2(&player, nullptr, &silent, disc.c_str()) != DVDNAV_STATUS_OK) {
            ADD_FAILURE() << disc << " does not open";
            return;
        }
        m_player.reset(player);
        dvdnav_set_readahead_flag(player, 0);
        dvdnav_set_PGC_positioning_flag(player, 1);
    }

    dvdnav_t* Player() const { return m_player.get(); }

    DiscPlace Place() const {
        std::int32_t title = 0, chapter = 0;
        // Each page is a film of its own.
        if (!dvdnav_is_domain_vts(Player()))
            return MenuPlace(dvdnav_is_domain_vmgm(Player()) ? 0 : m_titleSet,
                             dvdnav_get_current_nav_dsi(Player())->dsi_gi.vobu_vob_idn);
        dvdnav_current_title_info(Player(), &title, &chapter);
        return FilmPlace(title, chapter);
    }

    /// The chosen button of the menu, from 1; 0 where there is none.
    int Chosen() const {
        std::int32_t button = 0;
        dvdnav_get_current_highlight(Player(), &button);
        return button;
    }

    int Buttons() const { return m_hasPacket ? dvdnav_get_current_nav_pci(Player())->hli.hl_gi.btn_ns : 0; }

    /// Plays on until a condition holds that is tried after each block; false where the disc ends before.
    bool PlayUntil(const std::function<bool(int event)>& condition) {
        constexpr int longest = 400'000;
        for (int i = 0; i < longest; ++i) {
            std::int32_t event = 0, length = 0;
            if (dvdnav_get_next_block(Player(), m_block.data(), &event, &length) != DVDNAV_STATUS_OK) {
                ADD_FAILURE() << dvdnav_err_to_string(Player());
                return false;
            }
            if (event == DVDNAV_STOP) return false;
            if (event == DVDNAV_STILL_FRAME) dvdnav_still_skip(Player());
            if (event == DVDNAV_WAIT) dvdnav_wait_skip(Player());
            if (event == DVDNAV_NAV_PACKET) m_hasPacket = true;
            if (event == DVDNAV_VTS_CHANGE)
                m_titleSet = reinterpret_cast<const dvdnav_vts_change_event_t*>(m_block.data())->new_vtsN;
            if (condition(event)) return true;
        }
        ADD_FAILURE() << "nothing happens at " << Place();
        return false;
    }

    /// Plays on until the player shows a picture of where it is.
    bool PlayToPicture() {
        m_hasPacket = false;
        return PlayUntil([&](int) { return m_hasPacket; });
    }
    /// Plays on until the menu has buttons to choose from.
    bool PlayToButtons() {
        return PlayUntil([&](int event) { return event == DVDNAV_NAV_PACKET && Buttons() > 0; });
    }
    /// Plays a film to where it ends.
    bool PlayToMenu() {
        return PlayUntil([&](int) { return !dvdnav_is_domain_vts(Player()); }) && PlayToButtons();
    }

    /// Presses a button of the menu, from 1, and follows where it leads.
    bool Press(int button) {
        if (dvdnav_button_select_and_activate(Player(), dvdnav_get_current_nav_pci(Player()), button) !=
            DVDNAV_STATUS_OK)
            return false;
        return PlayToPicture();
    }
    bool Call(DVDMenuID_t menu) {
        if (dvdnav_menu_call(Player(), menu) != DVDNAV_STATUS_OK) return false;
        return PlayToPicture();
    }

    /// The colours of pictures over the film, brightness and the two differences, after an event of their change.
    std::set<std::uint32_t> Colours() const {
        const auto* const colours = reinterpret_cast<const std::uint32_t*>(m_block.data());
        return {colours, colours + 16};
    }
    /// The numbers of the streams that are shown over wide pictures, after an event of their change.
    int MarksOfWholePictures() const { return StreamChange().physical_wide; }
    int MarksOfLetterboxedPictures() const { return StreamChange().physical_letterbox; }

    /// The number of the stream of pictures that the block holds a part of; -1 for another one.
    int SubpictureOfBlock() const {
        constexpr std::size_t header = 14;
        const std::uint8_t* const packet = m_block.data() + header;
        if (packet[3] != 0xBD) return -1;
        const int stream = packet[9 + packet[8]];
        return stream >= 0x20 && stream < 0x40 ? stream - 0x20 : -1;
    }

 private:
    const dvdnav_spu_stream_change_event_t& StreamChange() const {
        return *reinterpret_cast<const dvdnav_spu_stream_change_event_t*>(m_block.data());
    }

    struct Close {
        void operator()(dvdnav_t* player) const { dvdnav_close(player); }
    };
    std::unique_ptr<dvdnav_t, Close> m_player;
    alignas(8) std::array<std::uint8_t, DVD_VIDEO_LB_LEN> m_block{};
    int m_titleSet = 0;
    bool m_hasPacket = false;
};

}  // namespace Nifikral
