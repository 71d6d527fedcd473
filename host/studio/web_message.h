#pragma once

#include <functional>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// What goes between a browser and the studio.
namespace Nifikral {

/// What the body of a request may hold.
inline constexpr std::size_t mostBodyBytes = 4 << 20;

/// A request that has passed the gate. Names of headers are in small letters.
struct WebRequest {
    std::string method, path;  ///< the path within the studio, as "api/still"; decoded
    std::map<std::string, std::string> query, headers;
    std::string body;

    /// Empty where there is none of this name.
    std::string Query(const std::string& name) const {
        const auto found = query.find(name);
        return found == query.end() ? "" : found->second;
    }
    std::string Header(const std::string& name) const {
        const auto found = headers.find(name);
        return found == headers.end() ? "" : found->second;
    }
};

struct WebReply {
    /// Sends bytes; false when the reader has gone or the studio ends. Waits for a slow reader.
    using Send = std::function<bool(std::string_view)>;

    int status = 200;
    std::string type, body;
    std::vector<std::pair<std::string, std::string>> headers = {};
    /// Where it is set, called over and over in place of the body, to send what comes next; false: that was all.
    std::function<bool(const Send&)> stream = {};
};

/// What ends a request with a status of its own and a line that names the thing and the remedy.
class WebError : public std::runtime_error {
 public:
    WebError(int status, const std::string& line) : std::runtime_error(line), m_status(status) {}
    int Status() const { return m_status; }

 private:
    int m_status;
};

/// A newer request of the same view has come.
class Superseded : public WebError {
 public:
    Superseded() : WebError(409, "a newer request of this view has come") {}
};

}  // namespace Nifikral
