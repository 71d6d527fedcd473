#include "host/base/text_file.h"

#include <ios>

#include "host/base/errors.h"

namespace Nifikral {

std::string ReadText(std::istream& stream, const std::string& name, const std::string& kind) {
    constexpr std::size_t most = 16 << 20, step = 64 << 10;  // bytes
    std::string text;
    while (stream && text.size() <= most) {
        const std::size_t had = text.size();
        text.resize(had + step);
        stream.read(text.data() + had, step);
        text.resize(had + std::size_t(stream.gcount()));
    }
    if (stream.bad()) throw HostError(ExitCode::Input, name + " cannot be read on; copy it anew");
    if (text.size() > most)
        throw HostError(ExitCode::Input, name + " is longer than 16 MB, so no " + kind + "; check the name");
    return text;
}

}  // namespace Nifikral
