#include "host/studio/web_gate.h"

#include <sys/random.h>

#include <array>
#include <cerrno>

#include "host/base/errors.h"

namespace Nifikral {
namespace {

std::string RandomToken() {
    std::array<unsigned char, 16> bytes{};
    std::size_t count = 0;
    while (count < bytes.size()) {
        const ssize_t got = getrandom(bytes.data() + count, bytes.size() - count, 0);
        if (got < 0 && errno != EINTR)
            throw HostError(ExitCode::Failed, "the system gives no random numbers; the studio needs them");
        if (got > 0) count += std::size_t(got);
    }
    std::string token;
    for (const unsigned char byte : bytes) {
        token += "0123456789abcdef"[byte >> 4];
        token += "0123456789abcdef"[byte & 15];
    }
    return token;
}

// In a time that does not depend on where they differ.
bool AreEqual(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    unsigned difference = 0;
    for (std::size_t i = 0; i < a.size(); ++i) difference |= unsigned(a[i] ^ b[i]);
    return difference == 0;
}

}  // namespace

WebGate::WebGate(int port)
    : m_host("127.0.0.1:" + std::to_string(port)), m_origin("http://" + m_host), m_token(RandomToken()) {}

bool WebGate::Admits(std::string& path, const std::multimap<std::string, std::string>& headers) const {
    // A name that leads to this address is a foreign one: its pages are not the studio's.
    const auto host = headers.find("host");
    if (headers.count("host") != 1 || host->second != m_host) return false;
    for (auto [origin, end] = headers.equal_range("origin"); origin != end; ++origin)
        if (origin->second != m_origin) return false;
    for (auto [site, end] = headers.equal_range("sec-fetch-site"); site != end; ++site)
        if (site->second != "same-origin" && site->second != "none") return false;
    const std::size_t end = path.find('/', 1);
    if (end == std::string::npos || !AreEqual(std::string_view(path).substr(1, end - 1), m_token)) return false;
    path.erase(0, end + 1);
    return true;
}

}  // namespace Nifikral
