#include "host/films/media_manager.h"

#include <charconv>
#include <cmath>
#include <cstring>
#include <string>
#include <string_view>

#include "TarvoBased/CBaseException.h"
#include "TarvoBased/boundary.h"
#include "TarvoBased/error_codes.h"
#include "host/films/manager_sources.h"
#include "host/films/text_renderer.h"

namespace Nifikral {
namespace {

using namespace TarvoBased;

constexpr char sourceName[] = "media_manager";
// Lines that a caller reads beside an error of this unit.
enum Line : int { lineImporter = 20, lineOpen = 40, lineCreate = 60 };

// Files are opened by name; an importer of files makes no empty source.
class FileImporter final : public AVBased::IAVImporter {
 public:
    AVBased::IAVSource* CreateSource() override {
        GetTarvoException()->SetException(errorGeneral, "A file is opened by its name, with OpenSource", lineCreate,
                                          sourceName);
        return nullptr;
    }
};

class TextImporter final : public AVBased::IAVImporter {
 public:
    AVBased::IAVSource* CreateSource() override {
        return AtBoundary(lineCreate, sourceName, [] { return NewTextSource(); });
    }
};

// In front of a path with its playback, as "25/1:loop:", "0/1:once:" or "25/1:1500:loop:"; "%" and ";" in it are "%25"
// and "%3B".
constexpr std::string_view playedPath = "nifikral-played:", loop = "loop:", once = "once:";

struct PlayedPath {
    std::string path;
    Playback playback;
};

// Takes a number and the character behind it from a text; false for a text of another form.
bool TakeNumber(std::string_view& text, int& number, char end) {
    const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const auto length = std::size_t(rest - text.data());
    if (error != std::errc() || length >= text.size() || *rest != end) return false;
    text.remove_prefix(length + 1);
    return true;
}

// A path of another form is a plain one.
PlayedPath ReadPath(std::string_view text) {
    PlayedPath plain{std::string(text), {}};
    if (!text.starts_with(playedPath)) return plain;
    text.remove_prefix(playedPath.size());
    PlayedPath played;
    AVRational& rate = played.playback.rate;
    if (!TakeNumber(text, rate.num, '/') || !TakeNumber(text, rate.den, ':') || rate.num < 0 || rate.den < 1)
        return plain;
    if (!text.empty() && text[0] >= '0' && text[0] <= '9' && !TakeNumber(text, played.playback.begin, ':'))
        return plain;
    played.playback.loops = text.starts_with(loop);
    if (!played.playback.loops && !text.starts_with(once)) return plain;
    text.remove_prefix(loop.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const std::string_view code = text.substr(i, 3);
        const bool escape = code == "%25" || code == "%3B";
        played.path += code == "%3B" ? ';' : text[i];
        if (escape) i += 2;
    }
    return played;
}

// As "640/360/3820648/1054242/": sides and colours. Null for a path of another form.
constexpr std::string_view plainPicture = "nifikral-plain:";
FramePtr DrawPlainPicture(std::string_view path) {
    int width = 0, height = 0, from = 0, to = 0;
    if (!path.starts_with(plainPicture)) return nullptr;
    path.remove_prefix(plainPicture.size());
    for (int* const number : {&width, &height, &from, &to})
        if (!TakeNumber(path, *number, '/')) return nullptr;
    if (width < 1 || height < 1 || width > largestSide || height > largestSide) return nullptr;
    FramePtr picture = NewPicture(AV_PIX_FMT_RGB24, width, height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (int c = 0; c < 3; ++c) {
                const auto channel = [c](int colour) { return double(colour >> (16 - 8 * c) & 255); };
                picture->data[0][std::ptrdiff_t(y) * picture->linesize[0] + 3 * x + c] = std::uint8_t(
                    std::lround(std::lerp(channel(from), channel(to), 0.7 * y / height + 0.3 * x / width)));
            }
    return picture;
}

[[noreturn]] void RaiseUnknownImporter(int line) {
    throw CBaseException(errorNotFound, textResourceNotFound, line, sourceName);
}

}  // namespace

std::string PlainPicture(int width, int height, unsigned from, unsigned to) {
    std::string path(plainPicture);
    for (const unsigned number : {unsigned(width), unsigned(height), from, to}) path += std::to_string(number) + "/";
    return path;
}

std::string PathInList(const std::string& path, const Playback& playback) {
    if (playback == Playback() && path.find(';') == std::string::npos && !path.starts_with(playedPath)) return path;
    std::string played(playedPath);
    played.append(std::to_string(playback.rate.num)).append("/").append(std::to_string(playback.rate.den)).append(":");
    if (playback.begin > 0) played.append(std::to_string(playback.begin)).append(":");
    played.append(playback.loops ? loop : once);
    for (const char c : path) played += c == '%' ? "%25" : c == ';' ? "%3B" : std::string(1, c);
    return played;
}

AVBased::IAVImporter* MediaManager::GetImporter(const char* importerName) {
    return AtBoundary(lineImporter, sourceName, [&]() -> AVBased::IAVImporter* {
        static FileImporter files;
        static TextImporter texts;
        RequirePointer(importerName, lineImporter, sourceName);
        if (std::strcmp(importerName, AVBased::importerSimpleHtmlText) == 0) return &texts;
        if (std::strcmp(importerName, AVBased::importerImage) == 0) return &files;
        RaiseUnknownImporter(lineImporter);
    });
}

AVBased::IAVSource* MediaManager::OpenFile(const std::string& path, const Playback& playback, bool picture) const {
    if (m_store)
        if (FramePtr kept = m_store->Find(path)) return NewPictureSource(std::move(kept));
    const auto keep = [&](const AVFrame& frame) {
        if (m_store) m_store->Keep(path, frame);
    };
    return picture ? OpenPictureSource(path) : OpenFileSource(path, playback, keep);
}

AVBased::IAVSource* MediaManager::OpenSource(const char* path, const char* importerName) {
    return AtBoundary(lineOpen, sourceName, [&]() -> AVBased::IAVSource* {
        RequirePointer(path, lineOpen, sourceName);
        RequirePointer(importerName, lineOpen, sourceName);
        const bool picture = std::strcmp(importerName, AVBased::importerImage) == 0;
        if (!picture && *importerName) RaiseUnknownImporter(lineOpen);
        if (FramePtr plain = DrawPlainPicture(path)) return NewPictureSource(std::move(plain));
        const PlayedPath file = ReadPath(path);
        try {
            return OpenFile(file.path, file.playback, picture);
        } catch (const std::bad_alloc&) {
            throw CBaseException(errorNoMemory, (file.path + " does not fit into the memory").c_str(), lineOpen,
                                 sourceName);
        }
    });
}

}  // namespace Nifikral
