// Requests to the studio: the first byte chooses what is asked for, the first line is the query, the rest the body.

#include "host/studio/studio.h"

#include "fuzz/target.h"
#include "host/base/split_text.h"

using namespace Nifikral;

namespace {

// All but what starts programs or goes on for ever.
constexpr const char* routes[][2] = {{"GET", "api/folder"},
                                     {"GET", "api/thumb"},
                                     {"GET", "api/facts"},
                                     {"POST", "api/request"},
                                     {"POST", "api/still"},
                                     {"GET", "api/file"},
                                     {"PUT", "api/file"},
                                     {"POST", "api/stream"},
                                     {"POST", "api/command"},
                                     {"POST", "api/menu/new"},
                                     {"POST", "api/menu/check"},
                                     {"POST", "api/menu/frame"},
                                     {"POST", "api/slideshow/check"},
                                     {"POST", "api/slideshow/frame"},
                                     {"POST", "api/disc/check"},
                                     {"PUT", "api/draft"},
                                     {"GET", "index.html"}};

WebRequest RequestOf(const std::uint8_t* bytes, std::size_t size) {
    WebRequest request;
    const auto& route = routes[bytes[0] % std::size(routes)];
    request.method = route[0];
    request.path = route[1];
    request.headers = {{"content-type", "application/json"}};
    const std::string text(bytes + 1, bytes + size);
    const std::size_t line = std::min(text.find('\n'), text.size());
    for (const std::string& pair : Split(text.substr(0, line), '&')) {
        const std::size_t equals = std::min(pair.find('='), pair.size());
        request.query[pair.substr(0, equals)] = pair.substr(std::min(equals + 1, pair.size()));
    }
    request.body = text.substr(std::min(line + 1, text.size()));
    return request;
}

WebServer::Handler MakeStudio() {
    setenv("XDG_STATE_HOME", Fuzzing::Folder().Path().c_str(), 1);
    setenv("HOME", Fuzzing::Folder().Path().c_str(), 1);
    StudioOptions options;
    options.folder = Fuzzing::Folder().Path();
    return StudioHandler(options, Fuzzing::Module());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    static const WebServer::Handler studio = MakeStudio();
    if (size == 0) return 0;
    Fuzzing::Try([&] {
        try {
            WebReply reply = studio(RequestOf(bytes, size));
            if (reply.stream) reply.stream([](std::string_view) { return false; });
        } catch (const WebError& refused) {
            constexpr int lowest = 400, highest = 599;
            if (refused.Status() < lowest || refused.Status() > highest) __builtin_trap();
        }
    });
    return 0;
}
