#include "host/studio/thumbnails.h"

#include <sys/resource.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <future>
#include <thread>

#include "host/disc/stages.h"
#include "host/studio/film_reader.h"
#include "host/studio/folder_listing.h"
#include "host/studio/preview_coding.h"
#include "host/studio/preview_source.h"

namespace Nifikral {
namespace {

// On a thread that takes what others leave of the processors: a thread's own priority can be lowered, but not raised.
std::string MadeBehindOthers(const std::function<std::string()>& make) {
    std::packaged_task<std::string()> task(make);
    std::future<std::string> made = task.get_future();
    std::thread worker([&task] {
        constexpr int low = 10;
        setpriority(PRIO_PROCESS, 0, low);
        task();
    });
    worker.join();
    return made.get();
}

std::string Made(const std::string& path, int size, double at) {
    FilmReader reader(path, size);
    const SourceFacts& facts = reader.Facts();
    constexpr double part = 0.1, most = 3;
    const FramePtr whole = reader.Near(facts.FrameAt(at >= 0 ? at : std::min(facts.seconds * part, most)));
    PictureShape shape = ShapeOf(*whole);
    const double scale = std::min(1.0, double(size) / std::max(shape.width, shape.height));
    shape.width = std::max(1, int(std::lround(shape.width * scale)));
    shape.height = std::max(1, int(std::lround(shape.height * scale)));
    return JpegOf(*Scaled(*whole, shape));
}

}  // namespace

WebReply Thumbnails::Reply(const std::string& path, int size, double at, const std::string& known) {
    const std::string own = m_folder.File(path), kind = FileKind(own);
    if (kind != "picture" && kind != "film") throw WebError(404, path + " is no picture and no film");
    const std::string key = KeyOfFile(own) + std::to_string(size) + "/" + std::to_string(at);
    const std::string tag = std::string("\"").append(std::to_string(std::hash<std::string>()(key))).append("\"");
    WebReply reply{200, "image/jpeg", {}, {{"Cache-Control", "private, max-age=3600"}, {"ETag", tag}}};
    constexpr int unchanged = 304;
    if (known == tag) {
        reply.status = unchanged;
        return reply;
    }
    if (reply.body = m_made.Find(key); !reply.body.empty()) return reply;
    const std::lock_guard lock(m_working);
    reply.body = MadeBehindOthers([&] { return Made(own, size, at); });
    m_made.Keep(key, reply.body, reply.body.size() + key.size());
    return reply;
}

}  // namespace Nifikral
