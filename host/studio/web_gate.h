#pragma once

#include <map>
#include <string>

namespace Nifikral {

/// Who may speak to a studio: pages that it has served itself, which know the token in its address.
class WebGate {
 public:
    /// Makes a token of 128 random bits. `port` is the one listened on.
    explicit WebGate(int port);

    /// "http://127.0.0.1:PORT/TOKEN/".
    std::string Address() const { return m_origin + "/" + m_token + "/"; }
    /// Whether a request may pass: its path begins with the token, it names this host, and comes from no other page.
    /// Takes the token off the path. Names of headers are in small letters.
    bool Admits(std::string& path, const std::multimap<std::string, std::string>& headers) const;

 private:
    std::string m_host, m_origin, m_token;
};

}  // namespace Nifikral
