#pragma once

#include <string>

#include "host/catalogue/effect_module.h"
#include "host/studio/web_server.h"

namespace Nifikral {

struct StudioOptions {
    std::string folder;     ///< that is worked in; empty: the current one
    int port = 0;           ///< 0: any that is free
    bool open = false;      ///< shows the page in the user's browser
    bool confined = false;  ///< reach nothing but the folder
    std::string page;       ///< a folder with the page's files, in place of those that the program holds; or empty
};

/// Serves a page that shows the folder's pictures and films under effects, menus and slideshows while they are chosen,
/// until the program is interrupted. Throws host errors.
void RunStudio(const StudioOptions& options, const EffectModule& module);

/// What a studio does with the requests that have passed the gate, without a server. `module` must outlive it.
WebServer::Handler StudioHandler(const StudioOptions& options, const EffectModule& module);

}  // namespace Nifikral
