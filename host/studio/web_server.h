#pragma once

#include <functional>
#include <memory>
#include <string>

#include "host/studio/web_message.h"

namespace Nifikral {

/// A server of HTTP for pages of its own on this machine, at an address that has a secret in it. Requests from anywhere
/// else are refused, slow or large ones ended, and no more than a bounded number is taken at once.
class WebServer {
 public:
    /// Called on several threads at once. What it throws becomes an error in JSON.
    using Handler = std::function<WebReply(const WebRequest&)>;

    /// Listens on the loopback address; port 0: any that is free. Throws an output error when that fails.
    WebServer(int port, Handler handler);
    ~WebServer();
    WebServer(const WebServer&) = delete;
    WebServer& operator=(const WebServer&) = delete;

    const std::string& Address() const;
    /// Serves until the program is interrupted, and ends whatever is being sent then.
    void Run();

 private:
    struct Parts;
    std::unique_ptr<Parts> m_parts;
};

}  // namespace Nifikral
