#include "host/films/captions.h"

#include <algorithm>
#include <filesystem>

#include "host/base/errors.h"
#include "host/base/nearest_names.h"
#include "host/films/film.h"
#include "host/films/styled_text.h"
#include "host/films/text_renderer.h"

namespace Nifikral {
namespace {

using Word = std::pair<const char*, std::string (*)(const Slide&, std::size_t)>;

// Of a date "2026-07-14 15:02:11".
constexpr std::size_t dayLength = 10, minuteLength = 5;

const Word words[] = {
    {"name", [](const Slide& slide, std::size_t) { return std::filesystem::path(slide.path).stem().string(); }},
    {"number", [](const Slide&, std::size_t number) { return std::to_string(number); }},
    {"date", [](const Slide& slide, std::size_t) { return slide.facts.date.substr(0, dayLength); }},
    {"time",
     [](const Slide& slide, std::size_t) {
         const std::string& date = slide.facts.date;
         return date.size() > dayLength ? date.substr(dayLength + 1, minuteLength) : "";
     }},
    {"description", [](const Slide& slide, std::size_t) { return slide.facts.description; }},
    {"place", [](const Slide& slide, std::size_t) { return slide.facts.place; }},
};

// Calls text(piece) for what stands outside of braces and word(name) for what stands in them.
template <class Text, class Name>
void ReadPattern(const std::string& pattern, Text text, Name name) {
    std::size_t at = 0;
    for (;;) {
        const std::size_t open = pattern.find('{', at), close = pattern.find('}', open);
        text(pattern.substr(at, close == std::string::npos ? close : open - at));
        if (close == std::string::npos) return;
        name(pattern.substr(open + 1, close - open - 1));
        at = close + 1;
    }
}

// Words that a picture says nothing for leave no gaps: single blanks, and no empty lines.
std::string Tidied(const std::string& text) {
    std::string tidy;
    for (const char c : text) {
        const bool isBlank = c == ' ' || c == '\n';
        if (isBlank && (tidy.empty() || tidy.back() == '\n')) continue;
        if (isBlank && tidy.back() == ' ') tidy.pop_back();
        tidy += c;
    }
    const std::size_t end = tidy.find_last_not_of(" \n");
    return end == std::string::npos ? "" : tidy.substr(0, end + 1);
}

}  // namespace

void CheckCaptions(const std::string& pattern, const std::string& where) {
    const auto ignore = [](const std::string&) {};
    ReadPattern(pattern, ignore, [&](const std::string& name) {
        std::vector<std::string> names;
        std::string all;
        for (const Word& word : words) {
            if (name == word.first) return;
            names.emplace_back(word.first);
            all += std::string(all.empty() ? "{" : ", {") + word.first + "}";
        }
        throw HostError(ExitCode::Usage,
                        where + "captions know no {" + name + "}" + DidYouMean(name, names) + "; there are " + all);
    });
}

std::string CaptionOf(const std::string& pattern, const Slide& slide, std::size_t number) {
    std::string caption;
    ReadPattern(
        WithLineFeeds(pattern), [&](const std::string& text) { caption += text; },
        [&](const std::string& name) {
            for (const Word& word : words)
                if (name == word.first) caption += ValidUtf8(word.second(slide, number));
        });
    return Tidied(caption);
}

CaptionPainter::CaptionPainter(const EffectModule& module, std::vector<Caption> captions, int width, int height)
    : m_captions(std::move(captions)), m_title(module.Create("title")) {
    if (!m_title) throw HostError(ExitCode::Failed, module.Path() + " makes no titles; name another --module");
    // As small as a narrow film needs it, and a tenth away from each edge, which some screens hide.
    const int size = std::max(std::min(height / 20, width / 16), 1);
    const int left = width / 10, top = height / 2, bottom = height - height / 10;
    const auto text = [](int number) { return std::to_string(number); };
    SetProperties(*m_title,
                  {{"fontstyle", "bold outline shadow"},
                   {"size", text(std::min(size, 1000))},
                   {"box", text(left) + ";" + text(top) + ";" + text(std::max(width - 2 * left, 1)) + ";" +
                               text(std::max(bottom - top, 1))},
                   {"valign", "bottom"},
                   {"inMotion", "none"},
                   {"outMotion", "none"}},
                  [](const std::string& name, const std::string& reason) {
                      throw HostError(ExitCode::Failed, "the title refuses its " + name + ": " + reason);
                  });
}

void CaptionPainter::Draw(AVBased::IRawVideoFrame& frame, long long number) {
    const auto caption = std::ranges::find_if(
        m_captions, [&](const Caption& c) { return number >= c.first && number < c.first + c.count; });
    if (caption == m_captions.end()) return;
    if (m_shown != &*caption) {
        m_shown = &*caption;
        const std::string fade = std::to_string(caption->fade);
        for (const auto& [name, value] : {std::pair<const char*, std::string>("text", caption->text),
                                          {"duration", std::to_string(std::max(caption->count, 2LL))},
                                          {"inDuration", fade},
                                          {"outDuration", fade}})
            m_title->SetProperty(name, value.c_str());
    }
    m_title->Seek(unsigned(number - caption->first));
    AVBased::ImagePostion record{};
    frame.GetDimension(&record.width, &record.height);
    m_title->ProcFrameInPlace(&record, int(number), &frame);
}

}  // namespace Nifikral
