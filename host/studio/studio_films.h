#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "host/disc/disc_page.h"
#include "host/films/media_manager.h"
#include "host/films/menu_project.h"
#include "host/films/slideshow.h"
#include "host/studio/film_preview.h"
#include "host/studio/last_used.h"
#include "host/studio/shared_frame.h"
#include "host/studio/studio_folder.h"
#include "host/studio/studio_json.h"
#include "host/studio/web_message.h"

namespace Nifikral {

/// The menus, slideshows and discs that a page edits: what is wrong with them, where things stand, and their frames.
/// All take what the page sends, and throw WebError and host errors. Threads: any.
class StudioFilms {
 public:
    /// `module` is the file of the module; pictures that its generators open are kept for the next time.
    StudioFilms(const StudioFolder& folder, const std::string& module);

    Json NewMenu(const Json& body);
    Json CheckMenu(const Json& body);
    Json CheckShow(const Json& show);
    Json SurveyDisc(const Json& body) const;
    Json CheckDisc(const Json& body) const;
    /// The pages of a disc's menus: how long they are, and their buttons, whose boxes are shares of the picture.
    Json DiscMenus(const Json& body);
    enum class Kind { Menu, Show, Disc };
    WebReply Frame(Kind kind, const Json& body);
    WebReply Stream(Kind kind, const Json& body);

 private:
    class Store final : public PictureStore {
     public:
        FramePtr Find(const std::string& path) override;
        void Keep(const std::string& path, const AVFrame& picture) override;

     private:
        static constexpr std::size_t mostBytes = 384 << 20;
        LastUsed<SharedFrame> m_pictures{mostBytes};
    };
    struct ShowWish {
        SlideshowOptions options;
        std::vector<Slide> slides;
        std::vector<std::string> missing;
    };

    std::vector<MenuProject> ReadMenu(const Json& body);
    std::shared_ptr<const std::vector<DiscPage>> ReadDiscPages(const Json& body);
    ShowWish ReadShow(const Json& show, int width);
    // Whether a slide that is seen there turns out to be damaged: it is left out from now on.
    bool LeavesOut(const Json& show, long long number);
    // All but the number.
    FilmWish WishOf(Kind kind, const Json& body);

    const StudioFolder& m_folder;
    Store m_store;
    MediaManager m_manager;
    EffectModule m_module;
    std::mutex m_mutex;
    std::map<std::string, Slide> m_tried;  // by path and time of change; without a path: it cannot be read
    int m_leftOut = 0;                     // of them, when they were looked at
    // The menus that were laid out last, and of what: laying them out takes long.
    std::string m_discOf;
    std::shared_ptr<const std::vector<DiscPage>> m_discPages;
    static constexpr std::size_t mostViews = 64, mostBytes = 160 << 20;
    FilmFrames m_frames{mostBytes};
    ViewTurns<FilmView> m_views{mostViews};
};

}  // namespace Nifikral
